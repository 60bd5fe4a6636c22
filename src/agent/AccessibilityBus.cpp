#include "agent/AccessibilityBus.h"

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
const Accessible registryRoot{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
constexpr const char* registryInterface = "org.a11y.atspi.Registry";
constexpr const char* registryPath = "/org/a11y/atspi/registry";
constexpr const char* boundsEvent = "Object:BoundsChanged:";
// What one layout of a panel tells of comes within so long of each other.
constexpr std::chrono::milliseconds eventPause{5};
// More objects than a panel has: one that makes new ones for ever must not fill the memory.
constexpr std::size_t mostBounds = 4096;
// Messages; then others have their turn.
constexpr int mostAtOnce = 2000;

bool readChildren(sd_bus_message* answer, std::vector<Accessible>& children) {
  if (sd_bus_message_enter_container(answer, 'a', "(so)") < 0) return false;
  const char* service = nullptr;
  const char* path = nullptr;
  int read = 1;
  while (children.size() < AccessibilityBus::mostChildren &&
         (read = sd_bus_message_read(answer, "(so)", &service, &path)) > 0)
    children.push_back({service, path});
  return read >= 0;
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

template <typename Value>
std::function<bool(sd_bus_message*)> reading(bool (*read)(sd_bus_message*, Value&),
                                             std::function<void(const Value&)> handler) {
  return [read, handler = std::move(handler)](sd_bus_message* answer) {
    Value value{};
    const bool isRead = read(answer, value);
    if (isRead) handler(value);
    return isRead;
  };
}

}  // namespace

AccessibilityBus::AccessibilityBus(sd_event* loop) : loop_(loop), pause_(loop, [this] { gather(); }) {}

void AccessibilityBus::begin(const std::string& address) {
  deadline_ = Clock::now() + limit;
  if (bus_ && address == address_ && sd_bus_is_open(bus_.get()) > 0) return;
  address_ = address;
  drop();
  bus_ = connectTo(address);
}

void AccessibilityBus::askChildren(const Accessible& accessible,
                                   std::function<void(const std::vector<Accessible>&)> handler) {
  ask(accessible, accessibleInterface, "GetChildren", reading(&readChildren, std::move(handler)), "");
}

void AccessibilityBus::askIsDock(const Accessible& accessible, std::function<void(const bool&)> handler) {
  ask(accessible, accessibleInterface, "GetAttributes", reading(&readIsDock, std::move(handler)), "");
}

void AccessibilityBus::askExtents(const Accessible& accessible, Coordinates coordinates,
                                  std::function<void(const Rect&)> handler) {
  ask(accessible, componentInterface, "GetExtents", reading(&readExtents, std::move(handler)), "u",
      static_cast<std::uint32_t>(coordinates));
}

void AccessibilityBus::askApplications(std::function<void(const Accessible&, std::int32_t process)> handler) {
  askChildren(registryRoot, [this, handler = std::move(handler)](const std::vector<Accessible>& all) {
    for (const Accessible& application : all) {
      const auto found = [handler, application](sd_bus_message* answer) {
        const std::int32_t process = readNumber(answer);
        if (process != 0) handler(application, process);
        return process != 0;
      };
      ask(busDriver, "org.freedesktop.DBus", "GetConnectionUnixProcessID", found, "s", application.service.c_str());
    }
  });
}

template <typename... Arguments>
void AccessibilityBus::ask(const Accessible& whom, const char* interface, const char* method, Reader read,
                           const char* types, Arguments... arguments) {
  const auto answered = [this, read = std::move(read)](sd_bus_message* answer) { take(answer, read); };
  if (bus_ && call(bus_.get(), whom, interface, method, unlimited, answered, types, arguments...)) {
    ++open_;
  } else {
    outcome_ = Outcome::unanswered;
  }
}

void AccessibilityBus::take(sd_bus_message* answer, const Reader& read) {
  hasProgressed_ = true;
  const bool isRead = !isError(answer) && read(answer);
  if (sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY) > 0) outcome_ = Outcome::unanswered;
  if (!isRead && outcome_ == Outcome::complete) outcome_ = Outcome::refused;
  --open_;
}

void AccessibilityBus::whenSettled(std::function<void(Outcome)> settled) {
  settled_ = std::move(settled);
  if (open_ == 0) return settle();
  if (arrivals_) arrivals_->stop();
  pauseFor(expectedPause());
}

void AccessibilityBus::pauseFor(std::chrono::milliseconds pause) {
  pauseLength_ = pause;
  pause_.start(pause);
}

std::chrono::milliseconds AccessibilityBus::expectedPause() const {
  return std::chrono::milliseconds(1 + open_ / answersInMillisecond);
}

void AccessibilityBus::gather() {
  hasProgressed_ = false;
  int more = 1;
  for (int processed = 0; more > 0 && processed < mostAtOnce; ++processed) more = sd_bus_process(bus_.get(), nullptr);
  const bool isLate = open_ > 0 && Clock::now() >= deadline_;
  if (more < 0 || isLate) giveUp();
  if (more > 0 && bus_) return pauseFor(std::chrono::milliseconds(1));
  if (open_ > 0) return pauseFor(hasProgressed_ ? expectedPause() : std::min(2 * pauseLength_, longestPause));
  if (settled_) settle();
  heed();
}

// Answers that still come go the way of the connection.
void AccessibilityBus::giveUp() {
  if (open_ > 0) outcome_ = Outcome::unanswered;
  open_ = 0;
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
  match_ = match(bus_.get(), rule, [this](sd_bus_message* event) { moved(event); });
  sendWish("EventListenerRegistered");
  arrivals_.emplace(loop_, sd_bus_get_fd(bus_.get()), [this] {
    if (!pause_.isActive()) pauseFor(eventPause);
  });
  return true;
}

// In the form in which the registry passes wishes on. It would pass this one on to every program of the
// desktop, which would then all tell of what moves in their windows.
void AccessibilityBus::sendWish(const char* member) {
  sd_bus_message* wish = nullptr;
  if (sd_bus_message_new_signal(bus_.get(), &wish, registryPath, registryInterface, member) < 0) return;
  const BusMessage owned = taken(wish);
  if (sd_bus_message_set_destination(wish, listened_.c_str()) >= 0 &&
      sd_bus_message_append(wish, "ss", uniqueName(bus_.get()).c_str(), boundsEvent) >= 0)
    sd_bus_send(bus_.get(), wish, nullptr);
}

// A clock that ticks tells its old bounds anew.
void AccessibilityBus::moved(sd_bus_message* event) {
  Rect bounds;
  const char* path = sd_bus_message_get_path(event);
  if (path == nullptr || sd_bus_message_skip(event, "sii") < 0 ||
      sd_bus_message_enter_container(event, 'v', "(iiii)") < 0 || !readExtents(event, bounds))
    return;
  if (bounds_.size() > mostBounds) bounds_.clear();
  const auto [known, isNew] = bounds_.try_emplace(path, bounds);
  if (!isNew && known->second == bounds) return;
  known->second = bounds;
  isMoved_ = true;
}

void AccessibilityBus::heed() {
  if (arrivals_) arrivals_->start();
  if (std::exchange(isMoved_, false) && onBoundsChanged) onBoundsChanged();
}

}  // namespace orvo
