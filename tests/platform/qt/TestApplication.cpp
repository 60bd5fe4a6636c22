#include <QGuiApplication>

#include <gtest/gtest.h>

#include <optional>

namespace {

// The one application object that the tests of this program share.
class TestApplication final : public ::testing::Environment {
  void SetUp() override { application_.emplace(count_, &arguments_[0]); }
  void TearDown() override { application_.reset(); }

  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::optional<QGuiApplication> application_;
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new TestApplication);

}  // namespace
