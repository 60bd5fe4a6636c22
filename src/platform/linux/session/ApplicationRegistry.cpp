#include "platform/linux/session/ApplicationRegistry.h"

#include <QSocketNotifier>

#include <algorithm>
#include <utility>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvo {

namespace {

RunningApplication describe(std::int32_t processIdentifier, const std::string& bundleIdentifier,
                            const ApplicationIdentity& identity) {
  return {bundleIdentifier.empty() ? identity.bundleIdentifier : bundleIdentifier, processIdentifier,
          identity.localizedName, identity.bundlePath};
}

}  // namespace

// A process file descriptor, which becomes readable when the process ends.
class ApplicationRegistry::Watch {
 public:
  explicit Watch(std::int32_t processIdentifier)
      : descriptor_(static_cast<int>(::syscall(SYS_pidfd_open, processIdentifier, 0))) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() {
    notifier_.reset();
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  bool opened() const { return descriptor_ >= 0; }

  bool hasExited() const {
    pollfd state{descriptor_, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0;
  }

  template <typename Action>
  void onExit(QObject& context, Action action) {
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, &context, std::move(action));
  }

  void disregard() { notifier_->setEnabled(false); }

 private:
  int descriptor_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

ApplicationRegistry::ApplicationRegistry(ApplicationIdentities& identities) : identities_(identities) {}

ApplicationRegistry::~ApplicationRegistry() = default;

bool ApplicationRegistry::add(std::int32_t processIdentifier, const std::string& bundleIdentifier) {
  if (processIdentifier < 1) return false;
  if (isWatched(processIdentifier)) return rename(processIdentifier, bundleIdentifier), true;
  std::erase_if(unknown_, [](const auto& each) { return each.second.watch && each.second.watch->hasExited(); });
  auto watch = std::make_unique<Watch>(processIdentifier);
  if (!watch->opened()) return false;
  unknown_[processIdentifier] = {bundleIdentifier, std::move(watch)};
  identities_.find(processIdentifier,
                   [=, this](const ApplicationIdentity& identity) { learn(processIdentifier, identity); });
  const auto unknown = unknown_.find(processIdentifier);
  if (unknown != unknown_.end() && !bundleIdentifier.empty()) admit(processIdentifier, unknown->second, {});
  return watches_.contains(processIdentifier);
}

void ApplicationRegistry::learn(std::int32_t processIdentifier, const ApplicationIdentity& identity) {
  const auto found = unknown_.find(processIdentifier);
  if (found == unknown_.end() || identity.bundleIdentifier.empty()) return;
  Unknown unknown = std::move(found->second);
  unknown_.erase(found);
  if (unknown.watch) return admit(processIdentifier, unknown, identity);
  {
    const std::lock_guard lock(mutex_);
    for (RunningApplication& each : applications_)
      if (each.processIdentifier == processIdentifier)
        each = describe(processIdentifier, each.bundleIdentifier.value_or(""), identity);
  }
  emit changed(Notification::menuBarLayoutChanged);
}

void ApplicationRegistry::admit(std::int32_t processIdentifier, Unknown& unknown, const ApplicationIdentity& identity) {
  auto watch = std::move(unknown.watch);
  // Still running now: so what was described is the process that is watched, not a later one.
  if (watch->hasExited()) return void(unknown_.erase(processIdentifier));
  // Nobody sees the end of their own process, and this one is known before it has an event loop.
  if (processIdentifier != ::getpid()) watch->onExit(*this, [=, this] { exited(processIdentifier); });
  watches_.emplace(processIdentifier, std::move(watch));
  {
    const std::lock_guard lock(mutex_);
    applications_.push_back(describe(processIdentifier, unknown.bundle, identity));
  }
  emit changed(Notification::applicationLaunched);
}

// One that has exited counts no more, even before its end was heard of: the number may be another's by now.
bool ApplicationRegistry::isWatched(std::int32_t processIdentifier) {
  const auto known = watches_.find(processIdentifier);
  if (known == watches_.end()) return false;
  if (!known->second->hasExited()) return true;
  exited(processIdentifier);
  return false;
}

void ApplicationRegistry::rename(std::int32_t processIdentifier, const std::string& bundleIdentifier) {
  if (bundleIdentifier.empty() || processIdentifier == ::getpid()) return;
  const std::lock_guard lock(mutex_);
  for (RunningApplication& known : applications_)
    if (known.processIdentifier == processIdentifier) known.bundleIdentifier = bundleIdentifier;
}

void ApplicationRegistry::exited(std::int32_t processIdentifier) {
  const auto watch = watches_.extract(processIdentifier);
  if (watch.empty()) return;
  unknown_.erase(processIdentifier);
  watch.mapped()->disregard();
  // The notifier that may be calling goes once this call is over.
  QMetaObject::invokeMethod(
      this, [spent = std::shared_ptr<Watch>(std::move(watch.mapped()))] {}, Qt::QueuedConnection);
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(applications_, [&](const auto& known) { return known.processIdentifier == processIdentifier; });
  }
  emit changed(Notification::applicationTerminated);
}

std::vector<RunningApplication> ApplicationRegistry::applications() const {
  const std::lock_guard lock(mutex_);
  return applications_;
}

std::optional<RunningApplication> ApplicationRegistry::application(std::int32_t processIdentifier) const {
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(applications_.begin(), applications_.end(),
                                  [&](const auto& known) { return known.processIdentifier == processIdentifier; });
  if (found == applications_.end()) return std::nullopt;
  return *found;
}

}  // namespace orvo
