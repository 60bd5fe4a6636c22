// The processes that count as running applications: each from when it is added until it exits. Owned
// by DesktopWorkspace; main thread, but for the two readers.
#pragma once

#include "platform/Workspace.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo {

class ApplicationRegistry : public QObject {
  Q_OBJECT

 public:
  ApplicationRegistry();
  ApplicationRegistry(const ApplicationRegistry&) = delete;
  ApplicationRegistry& operator=(const ApplicationRegistry&) = delete;
  ~ApplicationRegistry() override;

  // False when there is no such process or nobody can say what it is. A `bundleIdentifier` overrules
  // what the process itself looks like, for one added before as well, but never for this process; an
  // empty one says nothing.
  bool add(std::int32_t processIdentifier, const std::string& bundleIdentifier = {});

  // In the order of their adding; any thread.
  std::vector<RunningApplication> applications() const;
  std::optional<RunningApplication> application(std::int32_t processIdentifier) const;

 signals:
  void launched();
  void terminated();

 private:
  class Watch;

  bool isWatched(std::int32_t processIdentifier);
  void rename(std::int32_t processIdentifier, const std::string& bundleIdentifier);
  void exited(std::int32_t processIdentifier);

  std::unordered_map<std::int32_t, std::unique_ptr<Watch>> watches_;
  mutable std::mutex mutex_;  // guards applications_
  std::vector<RunningApplication> applications_;
};

// Absent when nobody can say what it is. Given the identifier, that may be all that is known of it. Any thread; waits,
// see FileThread.
std::optional<RunningApplication> describeProcess(std::int32_t processIdentifier, const std::string& bundleIdentifier);

}  // namespace orvo
