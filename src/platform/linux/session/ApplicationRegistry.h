// The processes that count as running applications: each from when it is added until it exits. Owned
// by DesktopWorkspace; main thread, but for the two readers.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/Workspace.h"
#include "platform/linux/session/ApplicationIdentities.h"

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
  explicit ApplicationRegistry(ApplicationIdentities& identities);
  ApplicationRegistry(const ApplicationRegistry&) = delete;
  ApplicationRegistry& operator=(const ApplicationRegistry&) = delete;
  ~ApplicationRegistry() override;

  // False when there is no such process or nobody can say what it is. A `bundleIdentifier` overrules what the process
  // itself looks like, for one added before as well, but never for this process; an empty one says nothing. Where the
  // files that tell are slow, a process is added once they have told; with an identifier it is added at once, and what
  // else there is to say of it follows.
  bool add(std::int32_t processIdentifier, const std::string& bundleIdentifier = {});

  // What the process is, which may be known late.
  void learn(std::int32_t processIdentifier, const ApplicationIdentity& identity);

  // In the order of their adding; any thread.
  std::vector<RunningApplication> applications() const;
  std::optional<RunningApplication> application(std::int32_t processIdentifier) const;

 signals:
  // An application was launched or has terminated, or one that was added before is described in full now, which is told
  // as a change of the menu bar's layout.
  void changed(orvo::Notification what);

 private:
  class Watch;

  // Whose files have not told yet.
  struct Unknown {
    std::string bundle;
    std::unique_ptr<Watch> watch;  // null for one that was added by its identifier
  };

  void admit(std::int32_t processIdentifier, Unknown& unknown, const ApplicationIdentity& identity);
  bool isWatched(std::int32_t processIdentifier);
  void rename(std::int32_t processIdentifier, const std::string& bundleIdentifier);
  void exited(std::int32_t processIdentifier);

  ApplicationIdentities& identities_;
  std::unordered_map<std::int32_t, std::unique_ptr<Watch>> watches_;
  std::unordered_map<std::int32_t, Unknown> unknown_;
  mutable std::mutex mutex_;  // guards applications_
  std::vector<RunningApplication> applications_;
};

}  // namespace orvo
