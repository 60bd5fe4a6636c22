#include "agent/AccessibilityBus.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvo {

namespace {

// A panel that is not busy has answered so many in a millisecond.
constexpr std::size_t answersInMillisecond = 4;
// Pauses double as long as nothing comes.
constexpr std::chrono::milliseconds longestPause{100};

constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* componentInterface = "org.a11y.atspi.Component";
constexpr const char* registryInterface = "org.a11y.atspi.Registry";
constexpr const char* registryPath = "/org/a11y/atspi/registry";
constexpr const char* boundsEvent = "Object:BoundsChanged:";
// What one layout of a panel tells of comes within so long of each other.
constexpr std::chrono::milliseconds eventPause{5};
// More objects than a panel has: one that makes new ones for ever must not fill the memory.
constexpr std::size_t mostBounds = 4096;

bool readChildren(sd_bus_message* answer, std::vector<Accessible>& children) {
  if (sd_bus_message_enter_container(answer, 'a', "(so)") < 0) return false;
  const char* service = nullptr;
  const char* path = nullptr;
  int read = 0;
  while ((read = sd_bus_message_read(answer, "(so)", &service, &path)) > 0) children.push_back({service, path});
  return read == 0;
}

bool readIsDock(sd_bus_message* answer, bool& isDock) {
  if (sd_bus_message_enter_container(answer, 'a', "{ss}") < 0) return false;
  const char* name = nullptr;
  const char* value = nullptr;
  int read = 0;
  while ((read = sd_bus_message_read(answer, "{ss}", &name, &value)) > 0)
    isDock = isDock || (std::strcmp(name, "window-type") == 0 && std::strcmp(value, "dock") == 0);
  return read == 0;
}

bool readExtents(sd_bus_message* answer, Rect& extents) {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  if (sd_bus_message_read(answer, "(iiii)", &x, &y, &width, &height) <= 0) return false;
  extents = {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width), static_cast<double>(height)};
  return true;
}

sd_bus* connectTo(const std::string& address) {
  sd_bus* bus = nullptr;
  if (sd_bus_new(&bus) < 0) return nullptr;
  const bool isStarted =
      sd_bus_set_address(bus, address.c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
  return isStarted ? bus : sd_bus_unref(bus);
}

}  // namespace

AccessibilityBus::AccessibilityBus() : bus_(nullptr, sd_bus_close_unref), match_(nullptr, sd_bus_slot_unref) {
  pause_.setSingleShot(true);
  pause_.setTimerType(Qt::PreciseTimer);
  connect(&pause_, &QTimer::timeout, this, &AccessibilityBus::gather);
}

AccessibilityBus::~AccessibilityBus() = default;

void AccessibilityBus::begin(const std::string& address) {
  deadline_.setRemainingTime(limit);
  if (bus_ && address == address_ && sd_bus_is_open(bus_.get()) > 0) return;
  address_ = address;
  drop();
  bus_.reset(connectTo(address));
}

void AccessibilityBus::askChildren(const Accessible& accessible,
                                   std::function<void(const std::vector<Accessible>&)> handler) {
  ask(
      accessible, accessibleInterface, "GetChildren",
      [handler = std::move(handler)](sd_bus_message* answer) {
        std::vector<Accessible> children;
        const bool isRead = readChildren(answer, children);
        if (isRead) handler(children);
        return isRead;
      },
      "");
}

void AccessibilityBus::askIsDock(const Accessible& accessible, std::function<void(bool)> handler) {
  ask(
      accessible, accessibleInterface, "GetAttributes",
      [handler = std::move(handler)](sd_bus_message* answer) {
        bool isDock = false;
        const bool isRead = readIsDock(answer, isDock);
        if (isRead) handler(isDock);
        return isRead;
      },
      "");
}

void AccessibilityBus::askExtents(const Accessible& accessible, Coordinates coordinates,
                                  std::function<void(const Rect&)> handler) {
  ask(
      accessible, componentInterface, "GetExtents",
      [handler = std::move(handler)](sd_bus_message* answer) {
        Rect extents;
        const bool isRead = readExtents(answer, extents);
        if (isRead) handler(extents);
        return isRead;
      },
      "u", static_cast<std::uint32_t>(coordinates));
}

void AccessibilityBus::askProcess(const std::string& service, std::function<void(std::uint32_t)> handler) {
  ask(
      {"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus", "GetConnectionUnixProcessID",
      [handler = std::move(handler)](sd_bus_message* answer) {
        std::uint32_t process = 0;
        const bool isRead = sd_bus_message_read(answer, "u", &process) > 0;
        if (isRead) handler(process);
        return isRead;
      },
      "s", service.c_str());
}

template <typename... Arguments>
void AccessibilityBus::ask(const Accessible& whom, const char* interface, const char* method, Reader reader,
                           const char* types, Arguments... arguments) {
  const auto question = open_.insert(open_.end(), {this, std::move(reader)});
  const bool isSent =
      bus_ && sd_bus_call_method_async(bus_.get(), nullptr, whom.service.c_str(), whom.path.c_str(), interface, method,
                                       &AccessibilityBus::answered, &*question, types, arguments...) >= 0;
  if (isSent) return;
  open_.erase(question);
  outcome_ = Outcome::unanswered;
}

int AccessibilityBus::answered(sd_bus_message* answer, void* asked, sd_bus_error* /*error*/) {
  auto* question = static_cast<Question*>(asked);
  question->bus->take(answer, *question);
  return 0;
}

void AccessibilityBus::take(sd_bus_message* answer, const Question& question) {
  hasProgressed_ = true;
  const bool isRead = sd_bus_message_is_method_error(answer, nullptr) == 0 && question.read(answer);
  if (sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY) > 0) outcome_ = Outcome::unanswered;
  if (!isRead && outcome_ == Outcome::complete) outcome_ = Outcome::refused;
  open_.remove_if([&](const Question& each) { return &each == &question; });
}

void AccessibilityBus::whenSettled(std::function<void(Outcome)> settled) {
  settled_ = std::move(settled);
  if (open_.empty()) return settle();
  if (arrivals_) arrivals_->setEnabled(false);
  pause_.start(expectedPause());
}

std::chrono::milliseconds AccessibilityBus::expectedPause() const {
  return std::chrono::milliseconds(1 + open_.size() / answersInMillisecond);
}

void AccessibilityBus::gather() {
  hasProgressed_ = false;
  int more = 0;
  while ((more = sd_bus_process(bus_.get(), nullptr)) > 0) continue;
  const bool isLate = !open_.empty() && deadline_.hasExpired();
  if (more < 0 || isLate) giveUp();
  if (!open_.empty()) {
    pause_.start(hasProgressed_ ? expectedPause() : std::min(2 * pause_.intervalAsDuration(), longestPause));
    return;
  }
  if (settled_) settle();
  heed();
}

// Answers that still come go the way of the connection.
void AccessibilityBus::giveUp() {
  if (!open_.empty()) outcome_ = Outcome::unanswered;
  open_.clear();
  drop();
}

void AccessibilityBus::drop() {
  isMoved_ = isMoved_ || !listened_.empty();
  arrivals_.reset();
  match_.reset();
  listened_.clear();
  bounds_.clear();
  bus_.reset();
}

void AccessibilityBus::settle() { std::exchange(settled_, nullptr)(std::exchange(outcome_, Outcome::complete)); }

bool AccessibilityBus::listenTo(const std::string& service) {
  if (!bus_ || service == listened_) return false;
  if (!listened_.empty()) sendWish("EventListenerDeregistered");
  arrivals_.reset();
  match_.reset();
  bounds_.clear();
  listened_ = service;
  if (service.empty()) return false;
  const std::string rule =
      "type='signal',sender='" + service + "',interface='org.a11y.atspi.Event.Object',member='BoundsChanged'";
  sd_bus_slot* match = nullptr;
  sd_bus_add_match_async(bus_.get(), &match, rule.c_str(), &AccessibilityBus::moved, nullptr, this);
  match_.reset(match);
  sendWish("EventListenerRegistered");
  arrivals_ = std::make_unique<QSocketNotifier>(sd_bus_get_fd(bus_.get()), QSocketNotifier::Read);
  connect(arrivals_.get(), &QSocketNotifier::activated, this, [this] {
    arrivals_->setEnabled(false);
    if (!pause_.isActive()) pause_.start(eventPause);
  });
  return true;
}

// In the form in which the registry passes wishes on. It would pass this one on to every program of the
// desktop, which would then all tell of what moves in their windows.
void AccessibilityBus::sendWish(const char* member) {
  const char* self = nullptr;
  sd_bus_message* message = nullptr;
  if (sd_bus_get_unique_name(bus_.get(), &self) >= 0 &&
      sd_bus_message_new_signal(bus_.get(), &message, registryPath, registryInterface, member) >= 0 &&
      sd_bus_message_set_destination(message, listened_.c_str()) >= 0 &&
      sd_bus_message_append(message, "ss", self, boundsEvent) >= 0)
    sd_bus_send(bus_.get(), message, nullptr);
  sd_bus_message_unref(message);
}

// A clock that ticks tells its old bounds anew.
int AccessibilityBus::moved(sd_bus_message* event, void* listener, sd_bus_error* /*error*/) {
  auto& self = *static_cast<AccessibilityBus*>(listener);
  Rect bounds;
  const char* path = sd_bus_message_get_path(event);
  if (path == nullptr || sd_bus_message_skip(event, "sii") < 0 ||
      sd_bus_message_enter_container(event, 'v', "(iiii)") < 0 || !readExtents(event, bounds))
    return 0;
  if (self.bounds_.size() > mostBounds) self.bounds_.clear();
  const auto [known, isNew] = self.bounds_.try_emplace(path, bounds);
  if (!isNew && known->second == bounds) return 0;
  known->second = bounds;
  self.isMoved_ = true;
  return 0;
}

void AccessibilityBus::heed() {
  if (arrivals_) arrivals_->setEnabled(true);
  if (std::exchange(isMoved_, false)) Q_EMIT boundsChanged();
}

}  // namespace orvo
