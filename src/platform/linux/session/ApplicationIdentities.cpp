#include "platform/linux/session/ApplicationIdentities.h"

#include <limits>
#include <optional>
#include <utility>

namespace orvo {

namespace {

constexpr auto unlimited = std::numeric_limits<std::uint64_t>::max();

}  // namespace

ApplicationIdentities::ApplicationIdentities() : loop_(newLoop()), lookup_(loop_.get(), limit) {}

void ApplicationIdentities::begin() {
  notifier_ = std::make_unique<QSocketNotifier>(sd_event_get_fd(loop_.get()), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { serve(); });
}

void ApplicationIdentities::find(std::int32_t process, ApplicationLookup::Found found) {
  lookup_.find(process, std::move(found));
  while (lookup_.isExpecting() && sd_event_run(loop_.get(), unlimited) > 0) {
  }
  serve();
}

ApplicationIdentity ApplicationIdentities::findNow(std::int32_t process) {
  const auto known = std::make_shared<std::optional<ApplicationIdentity>>();
  lookup_.find(process, [known](const ApplicationIdentity& identity) { *known = identity; });
  while (!*known && sd_event_run(loop_.get(), unlimited) > 0) {
  }
  serve();
  return known->value_or(ApplicationIdentity{});
}

// The loop's descriptor tells of its timer only once it has nothing else to do.
void ApplicationIdentities::serve() {
  while (sd_event_run(loop_.get(), 0) > 0) {
  }
}

}  // namespace orvo
