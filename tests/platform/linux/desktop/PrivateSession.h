// A session of the tests' own: a home, a session bus and the one application object. Made before
// the first test and taken down after the last.
#pragma once

#include <QDBusConnection>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace orvo::test {

class PrivateSession final : public ::testing::Environment {
 public:
  void SetUp() override;
  void TearDown() override;

 private:
  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
  QTemporaryDir home_;
  QProcess bus_;
};

// A connection of its own, as another process would have; closed with the last reference to it.
std::shared_ptr<QDBusConnection> otherConnection();

// Sends the call and runs the event loop until it is answered.
QDBusMessage callAndWait(const QDBusConnection& connection, const QDBusMessage& call);

}  // namespace orvo::test
