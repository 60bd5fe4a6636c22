#include <QGuiApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

// The one application object that the tests of this program share.
class TestApplication final : public ::testing::Environment {
 public:
  void SetUp() override { application_ = std::make_unique<QGuiApplication>(count_, arguments_); }
  void TearDown() override { application_.reset(); }

 private:
  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new TestApplication);

}  // namespace
