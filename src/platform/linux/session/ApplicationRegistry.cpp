#include "platform/linux/session/ApplicationRegistry.h"

#include "platform/linux/ApplicationIdentity.h"

#include <QSocketNotifier>

#include <algorithm>
#include <utility>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvo {

namespace {

// Absent for what nobody can say what it is. Given the identifier, that may be all that is known of it.
std::optional<RunningApplication> described(std::int32_t processIdentifier, const std::string& bundleIdentifier,
                                            const std::optional<ApplicationIdentity>& identity) {
  const bool isKnown = !bundleIdentifier.empty();
  if (!identity && !isKnown) return std::nullopt;
  if (!identity) return RunningApplication{bundleIdentifier, processIdentifier, {}, {}};
  return RunningApplication{isKnown ? bundleIdentifier : identity->bundleIdentifier, processIdentifier,
                            identity->localizedName, identity->bundlePath};
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

ApplicationRegistry::ApplicationRegistry() = default;
ApplicationRegistry::~ApplicationRegistry() = default;

bool ApplicationRegistry::add(std::int32_t processIdentifier, const std::string& bundleIdentifier) {
  if (processIdentifier < 1) return false;
  if (isWatched(processIdentifier)) return rename(processIdentifier, bundleIdentifier), true;
  std::erase_if(slow_, [](const auto& each) { return each.second->hasExited(); });
  auto watch = std::make_unique<Watch>(processIdentifier);
  if (!watch->opened()) return false;
  const Identity identity = identifyProcess(processIdentifier, late_.to<Identity>([=, this](const Identity& late) {
    learned(processIdentifier, bundleIdentifier, late);
  }),
                                            late_.descriptor());
  const auto application = described(processIdentifier, bundleIdentifier, identity);
  if (application) return admit(*application, std::move(watch));
  slow_[processIdentifier] = std::move(watch);
  return false;
}

bool ApplicationRegistry::admit(const RunningApplication& application, std::unique_ptr<Watch> watch) {
  // Still running now: so what was described is the process that is watched, not a later one.
  if (watch->hasExited()) return false;
  const std::int32_t process = application.processIdentifier;
  // Nobody sees the end of their own process, and this one is known before it has an event loop.
  if (process != ::getpid()) watch->onExit(*this, [this, process] { exited(process); });
  watches_.emplace(process, std::move(watch));
  {
    const std::lock_guard lock(mutex_);
    applications_.push_back(application);
  }
  emit launched();
  return true;
}

// Files that were slow have told by now what the process is.
void ApplicationRegistry::learned(std::int32_t processIdentifier, const std::string& bundleIdentifier,
                                  const Identity& identity) {
  auto slow = slow_.extract(processIdentifier);
  if (!identity) return;
  if (isWatched(processIdentifier)) {
    {
      const std::lock_guard lock(mutex_);
      for (RunningApplication& each : applications_)
        if (each.processIdentifier == processIdentifier)
          each = *described(processIdentifier, each.bundleIdentifier.value_or(""), identity);
    }
    emit launched();
  } else if (!slow.empty()) {
    admit(*described(processIdentifier, bundleIdentifier, identity), std::move(slow.mapped()));
  }
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
  watch.mapped()->disregard();
  // The notifier that may be calling goes once this call is over.
  QMetaObject::invokeMethod(
      this, [spent = std::shared_ptr<Watch>(std::move(watch.mapped()))] {}, Qt::QueuedConnection);
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(applications_, [&](const auto& known) { return known.processIdentifier == processIdentifier; });
  }
  emit terminated();
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
