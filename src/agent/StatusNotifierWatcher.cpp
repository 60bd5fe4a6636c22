#include "agent/StatusNotifierWatcher.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <type_traits>
#include <utility>

#include "agent/MenuBarService.h"
#include "agent/PanelQueue.h"

namespace orvo {

namespace {

// An Ayatana program that has its answer before a panel is there makes an icon of the older kind besides.
constexpr std::chrono::seconds unrest{2};
constexpr std::chrono::milliseconds answerPause{300};

// A plug-in that is not stopped has made way in 30 ms.
constexpr std::chrono::seconds takeOverLimit{2};

constexpr const char* listProperty = "RegisteredStatusNotifierItems";

template <char type, int value>
int constant(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
  return sd_bus_message_append_basic(reply, type, &std::integral_constant<int, value>::value);
}

// Qt programs that hear "no" once do without an icon for the rest of the session, so the panel is taken for granted.
constexpr auto isHostRegistered = &constant<SD_BUS_TYPE_BOOLEAN, 1>;
constexpr auto protocolVersion = &constant<SD_BUS_TYPE_INT32, 0>;

const sd_bus_vtable watcherTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("RegisterStatusNotifierItem", SD_BUS_ARGS("s", service), SD_BUS_NO_RESULT,
                            &StatusNotifierWatcher::registerItem, 0),
    SD_BUS_METHOD_WITH_ARGS("RegisterStatusNotifierHost", SD_BUS_ARGS("s", service), SD_BUS_NO_RESULT,
                            &StatusNotifierWatcher::registerHost, 0),
    SD_BUS_PROPERTY(listProperty, "as", &StatusNotifierWatcher::items, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", isHostRegistered, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("ProtocolVersion", "i", protocolVersion, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_SIGNAL_WITH_ARGS("StatusNotifierItemRegistered", SD_BUS_ARGS("s", service), 0),
    SD_BUS_SIGNAL_WITH_ARGS("StatusNotifierItemUnregistered", SD_BUS_ARGS("s", service), 0),
    SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
    SD_BUS_SIGNAL("StatusNotifierHostUnregistered", "", 0),
    SD_BUS_VTABLE_END,
};

}  // namespace

StatusNotifierWatcher::StatusNotifierWatcher(sd_bus* bus, MenuBarService& service)
    : bus_(bus),
      service_(service),
      answering_(sd_bus_get_event(bus), [this] { answerLate(); }),
      takingLate_(sd_bus_get_event(bus), [this] { endTakeOver("The panel does not let go of the tray."); }) {
  const auto announce = [this](const char* signal) {
    return [this, signal](const std::string& item) {
      sd_bus_emit_signal(bus_, watcherPath, watcherName, signal, "s", item.c_str());
    };
  };
  service_.onItemShown = announce("StatusNotifierItemRegistered");
  service_.onItemHidden = announce("StatusNotifierItemUnregistered");
  sd_bus_slot* object = nullptr;
  sd_bus_add_object_vtable(bus_, &object, watcherPath, watcherName, watcherTable, this);
  object_.reset(object);
}

bool StatusNotifierWatcher::claimName() {
  acquired_ =
      match(bus_,
            std::string(
                "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='NameAcquired',") +
                "arg0='" + watcherName + '\'',
            [this](sd_bus_message*) { takeName(); });
  const int claimed = sd_bus_request_name(bus_, watcherName, SD_BUS_NAME_QUEUE);
  if (claimed < 0) return false;
  if (claimed > 0) takeName();
  if (held_) return true;
  std::fprintf(stderr, "orvo-agent: another program holds %s; waiting for it\n", watcherName);
  heir_.emplace(bus_);
  return true;
}

// Nobody can take the name away again: it allows no replacement.
void StatusNotifierWatcher::takeName() {
  if (std::exchange(held_, true)) return;
  std::fprintf(stderr, "orvo-agent: holds %s\n", watcherName);
  onNameHeld();
  if (heir_) inherit();
  endTakeOver(nullptr);
}

void StatusNotifierWatcher::takeOver(std::function<void(const char*)> done) {
  if (held_) return done(nullptr);
  takingOver_.push_back(std::move(done));
  if (takingOver_.size() > 1) return;
  // The list is of no interest but for its moment: the bus answers the heir, which asked it before, before it answers
  // here, and so the heir has the list before it comes here.
  askAboutName(bus_, "GetConnectionUnixProcessID", watcherName, takeOverLimit, [this](sd_bus_message* answer) {
    askProperty(bus_, {watcherName, watcherPath}, watcherName, listProperty, takeOverLimit,
                [this, process = readNumber(answer)](sd_bus_message* list) {
                  if (isError(list)) return endTakeOver("The program that manages the tray does not answer.");
                  restartTray(process);
                });
  });
}

// A plug-in ends on SIGUSR1 with the wish to be started again.
void StatusNotifierWatcher::restartTray(std::int32_t process) {
  if (held_) return;
  if (!isPlugin(process)) return endTakeOver("It does not belong to a plug-in of Xfce’s panel.");
  takingLate_.start(takeOverLimit);
  kill(process, SIGUSR1);
}

void StatusNotifierWatcher::endTakeOver(const char* hindrance) {
  takingLate_.stop();
  for (const auto& done : std::exchange(takingOver_, {})) done(hindrance);
}

void StatusNotifierWatcher::inherit() {
  unrestEnd_ = Clock::now() + unrest;
  for (const std::string& item : heir_->inherit()) service_.registerItem(item, {}, [] {});
}

void StatusNotifierWatcher::announceList() {
  sd_bus_emit_properties_changed(bus_, watcherPath, watcherName, listProperty, nullptr);
}

int StatusNotifierWatcher::items(sd_bus* bus, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                                 sd_bus_message* reply, void* watcher, sd_bus_error* /*error*/) {
  MenuBarService& service = static_cast<StatusNotifierWatcher*>(watcher)->service_;
  int result = sd_bus_message_open_container(reply, 'a', "s");
  for (const std::string& address : service.toldItems())
    if (result >= 0) result = sd_bus_message_append(reply, "s", address.c_str());
  sd_bus_message* call = sd_bus_get_current_message(bus);
  const bool isRead = call != nullptr && sd_bus_message_is_method_call(call, nullptr, nullptr) > 0;
  isRead ? service.listRead(sd_bus_message_get_sender(call)) : service.listTold();
  return result < 0 ? result : sd_bus_message_close_container(reply);
}

int StatusNotifierWatcher::registerItem(sd_bus_message* call, void* watcher, sd_bus_error* /*error*/) {
  auto& self = *static_cast<StatusNotifierWatcher*>(watcher);
  const bool isLate = Clock::now() < self.unrestEnd_;
  self.service_.registerItem(readText(call), sd_bus_message_get_sender(call), [&self, isLate, call = kept(call)] {
    if (!isLate) return void(sd_bus_reply_method_return(call.get(), ""));
    self.late_.push_back(call);
    self.answering_.start(answerPause);
  });
  return 1;
}

void StatusNotifierWatcher::answerLate() {
  for (const BusMessage& call : std::exchange(late_, {})) sd_bus_reply_method_return(call.get(), "");
}

// The announcement reaches items that came before the panel; who the panel is makes no difference to us.
int StatusNotifierWatcher::registerHost(sd_bus_message* call, void* watcher, sd_bus_error* /*error*/) {
  sd_bus_emit_signal(static_cast<StatusNotifierWatcher*>(watcher)->bus_, watcherPath, watcherName,
                     "StatusNotifierHostRegistered", "");
  sd_bus_reply_method_return(call, "");
  return 1;
}

}  // namespace orvo
