#include "agent/MenuBarAgent.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <utility>

#include "agent/LegacyTray.h"
#include "agent/MenuBarService.h"
#include "agent/PanelReader.h"
#include "agent/StatusNotifierWatcher.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/ApplicationLookup.h"

namespace orvo {

namespace {

// Of somebody who conceals and reveals all the time, others need not hear more often.
constexpr std::chrono::milliseconds requestersPause{50};

const sd_bus_vtable agentTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("ai", allowedSystemItems, "as", allowedBundleIdentifiers),
                            SD_BUS_RESULT("u", assertion), &MenuBarAgent::activate, 0),
    SD_BUS_METHOD_WITH_ARGS("Invalidate", SD_BUS_ARGS("u", assertion), SD_BUS_NO_RESULT, &MenuBarAgent::invalidate, 0),
    SD_BUS_METHOD("Tree", "", agent_protocol::treeForm, &MenuBarAgent::tree, 0),
    SD_BUS_METHOD("Items", "", agent_protocol::itemsForm, &MenuBarAgent::items, 0),
    SD_BUS_METHOD("Requesters", "", agent_protocol::requestersForm, &MenuBarAgent::requesters, 0),
    SD_BUS_METHOD("EndOthers", "", "", &MenuBarAgent::endOthers, 0),
    SD_BUS_METHOD("TakeOver", "", "", &MenuBarAgent::takeOver, 0),
    SD_BUS_SIGNAL("RequestersChanged", agent_protocol::requestersForm, 0),
    SD_BUS_PROPERTY(agent_protocol::heldProperty, "b", &MenuBarAgent::isWatcherHeld, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_SIGNAL_WITH_ARGS("ItemAdded", SD_BUS_ARGS("s", address, "u", processIdentifier, "s", bundleIdentifier), 0),
    SD_BUS_SIGNAL("TreeChanged", "", 0),
    SD_BUS_VTABLE_END,
};

// A message of one list, in this form.
class ListMessage {
 public:
  ListMessage(sd_bus_message* made, const char* form) : elementForm_(form + 1), message_(taken(made)) {
    sd_bus_message_open_container(made, 'a', elementForm_);
  }

  // Returns its index.
  template <typename... Values>
  std::int32_t add(Values... values) {
    sd_bus_message_append(message_.get(), elementForm_, values...);
    return count_++;
  }

  void send() {
    sd_bus_message_close_container(message_.get());
    sd_bus_send(nullptr, message_.get(), nullptr);
  }

 private:
  const char* elementForm_;
  BusMessage message_;
  std::int32_t count_ = 0;
};

std::string addressOf(const LegacyIcon& icon) {
  char text[16];
  std::snprintf(text, sizeof text, "x11:0x%x", icon.window);
  return text;
}

sd_bus_message* replyTo(sd_bus_message* call) {
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  return reply;
}

void sendRequesters(sd_bus_message* message, const std::set<std::int32_t>& processes) {
  ListMessage list(message, agent_protocol::requestersForm);
  for (const std::int32_t process : processes) list.add(process);
  list.send();
}

std::int32_t addElement(ListMessage& tree, std::int32_t parent, const std::string& identifier, const Rect& frame) {
  return tree.add(parent, ::getpid(), identifier.c_str(), 1, frame.x, frame.y, frame.width, frame.height);
}

std::int32_t addWithoutFrame(ListMessage& tree, std::int32_t parent, std::int32_t process, const char* identifier) {
  return tree.add(parent, process, identifier, 0, 0.0, 0.0, 0.0, 0.0);
}

void addDock(ListMessage& tree, const DockControls& dock) {
  const std::int32_t parent = addElement(tree, 0, {}, dock.frame);
  for (const StatusControl& control : dock.controls) {
    const std::string identifier = agent_protocol::controlPrefix + control.name;
    const std::int32_t whole = addElement(tree, parent, identifier, control.frame);
    const auto cut = pieces(control.frame);
    if (cut.size() < 2) continue;
    for (const Rect& piece : cut) addElement(tree, whole, identifier, piece);
  }
}

}  // namespace

MenuBarAgent::MenuBarAgent(sd_bus* bus, ApplicationLookup& applications, MenuBarService& service,
                           StatusNotifierWatcher& watcher, PanelReader& panel, LegacyTray* legacy)
    : bus_(bus),
      applications_(applications),
      service_(service),
      watcher_(watcher),
      panel_(panel),
      legacy_(legacy),
      pause_(sd_bus_get_event(bus), [this] { requestersChanged(); }) {
  service_.onItemArrived = [this](const TrayItem& item) {
    announceItem(item.address(), item.processIdentifier, item.bundle);
  };
  service_.onRequestersChanged = [this] { requestersChanged(); };
  if (legacy_ != nullptr) legacy_->onDocked = [this](const LegacyIcon& icon) { docked(icon); };
  watcher_.onNameHeld = [this] {
    sd_bus_emit_properties_changed(bus_, agent_protocol::path, agent_protocol::interface, agent_protocol::heldProperty,
                                   nullptr);
  };
  panel_.onLooked = [this](const std::vector<DockControls>& docks) {
    const bool isNew = std::exchange(seen_, docks) != docks;
    if (isNew || docks != told_)
      sd_bus_emit_signal(bus_, agent_protocol::path, agent_protocol::interface, "TreeChanged", "");
  };
  sd_bus_slot* object = nullptr;
  sd_bus_add_object_vtable(bus_, &object, agent_protocol::path, agent_protocol::interface, agentTable, this);
  object_.reset(object);
}

bool MenuBarAgent::claimName() { return sd_bus_request_name(bus_, agent_protocol::service, 0) >= 0; }

int MenuBarAgent::isWatcherHeld(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                                const char* /*property*/, sd_bus_message* reply, void* agent, sd_bus_error* /*error*/) {
  return sd_bus_message_append(reply, "b", static_cast<MenuBarAgent*>(agent)->watcher_.isNameHeld() ? 1 : 0);
}

// Which system items a request allows makes no difference here: the panel's own controls always stay.
int MenuBarAgent::activate(sd_bus_message* call, void* agent, sd_bus_error* error) {
  auto& self = *static_cast<MenuBarAgent*>(agent);
  if (!self.watcher_.isNameHeld())
    return sd_bus_error_set(error, agent_protocol::watcherNotHeldError, "Another program watches over the tray.");
  sd_bus_message_skip(call, "ai");
  const auto bundles = readTexts(call, Concealment::mostBundles + 1);
  self.service_.activate(sd_bus_message_get_sender(call), {bundles.begin(), bundles.end()},
                         [call = kept(call)](std::uint32_t assertion) {
                           if (assertion != 0) return void(sd_bus_reply_method_return(call.get(), "u", assertion));
                           sd_bus_reply_method_errorf(call.get(), SD_BUS_ERROR_LIMITS_EXCEEDED,
                                                      "Too many requests, or the person has ended them.");
                         });
  return 1;
}

int MenuBarAgent::invalidate(sd_bus_message* call, void* agent, sd_bus_error* error) {
  const auto assertion = static_cast<std::uint32_t>(readNumber(call));
  if (static_cast<MenuBarAgent*>(agent)->service_.invalidate(assertion, sd_bus_message_get_sender(call)))
    return sd_bus_reply_method_return(call, "");
  return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "The connection holds no such assertion.");
}

// Controls come first: whoever looks at so many elements and no more finds them all. Concealed items are told of too:
// a question may overtake the end of a concealment.
int MenuBarAgent::tree(sd_bus_message* call, void* agent, sd_bus_error* /*error*/) {
  auto& self = *static_cast<MenuBarAgent*>(agent);
  self.panel_.read([&self, call = kept(call)](const PanelReader::Reading& panel) {
    self.told_ = panel.docks;
    ListMessage tree(replyTo(call.get()), agent_protocol::treeForm);
    addWithoutFrame(tree, -1, ::getpid(), panel.isFresh ? "" : agent_protocol::outOfDate);
    for (const DockControls& dock : panel.docks) addDock(tree, dock);
    for (const TrayItem& item : self.service_.menuBar().items()) addWithoutFrame(tree, 0, item.processIdentifier, "");
    for (const LegacyIcon& icon : self.legacyIcons()) addWithoutFrame(tree, 0, icon.process, "");
    tree.send();
  });
  return 1;
}

int MenuBarAgent::items(sd_bus_message* call, void* agent, sd_bus_error* /*error*/) {
  const auto& self = *static_cast<MenuBarAgent*>(agent);
  ListMessage items(replyTo(call), agent_protocol::itemsForm);
  for (const TrayItem& item : self.service_.menuBar().items())
    items.add(item.address().c_str(), item.processIdentifier, item.bundle.c_str());
  for (const LegacyIcon& icon : self.legacyIcons())
    items.add(addressOf(icon).c_str(), icon.process, icon.bundle.c_str());
  items.send();
  return 1;
}

int MenuBarAgent::requesters(sd_bus_message* call, void* agent, sd_bus_error* /*error*/) {
  sendRequesters(replyTo(call), static_cast<MenuBarAgent*>(agent)->service_.requesters());
  return 1;
}

// Others could keep the person from hiding anything.
int MenuBarAgent::endOthers(sd_bus_message* call, void* agent, sd_bus_error* /*error*/) {
  auto& self = *static_cast<MenuBarAgent*>(agent);
  askAboutName(self.bus_, "GetConnectionUnixProcessID", sd_bus_message_get_sender(call), unlimited,
               [&self, call = kept(call)](sd_bus_message* answer) {
                 const std::int32_t process = readNumber(answer);
                 if (!self.service_.isProtected(process)) {
                   sd_bus_reply_method_errorf(call.get(), SD_BUS_ERROR_ACCESS_DENIED, "The arrow is not the caller's.");
                   return;
                 }
                 self.service_.endOthers(process);
                 sd_bus_reply_method_return(call.get(), "");
               });
  return 1;
}

int MenuBarAgent::takeOver(sd_bus_message* call, void* agent, sd_bus_error* /*error*/) {
  static_cast<MenuBarAgent*>(agent)->watcher_.takeOver([call = kept(call)](const char* hindrance) {
    if (hindrance == nullptr) return void(sd_bus_reply_method_return(call.get(), ""));
    sd_bus_reply_method_errorf(call.get(), SD_BUS_ERROR_FAILED, "%s", hindrance);
  });
  return 1;
}

void MenuBarAgent::announceItem(const std::string& address, std::int32_t process, const std::string& bundle) {
  sd_bus_emit_signal(bus_, agent_protocol::path, agent_protocol::interface, "ItemAdded", "sus", address.c_str(),
                     process, bundle.c_str());
}

void MenuBarAgent::announceItems(std::int32_t process) {
  for (const TrayItem& item : service_.menuBar().items())
    if (item.processIdentifier == process) announceItem(item.address(), process, item.bundle);
  for (const LegacyIcon& icon : legacyIcons())
    if (icon.process == process) announceItem(addressOf(icon), process, icon.bundle);
}

void MenuBarAgent::docked(const LegacyIcon& icon) {
  applications_.find(icon.process, [this, icon](const ApplicationIdentity& application) {
    if (std::ranges::find(legacy_->icons(), icon.window, &LegacyIcon::window) == legacy_->icons().end()) return;
    legacy_->identify(icon.process, application.bundleIdentifier);
    announceItem(addressOf(icon), icon.process, application.bundleIdentifier);
  });
}

void MenuBarAgent::requestersChanged() {
  if (pause_.isActive() || announced_ == service_.requesters()) return;
  announced_ = service_.requesters();
  sd_bus_message* signal = nullptr;
  sd_bus_message_new_signal(bus_, &signal, agent_protocol::path, agent_protocol::interface, "RequestersChanged");
  sendRequesters(signal, announced_);
  pause_.start(requestersPause);
}

std::vector<LegacyIcon> MenuBarAgent::legacyIcons() const {
  return legacy_ == nullptr ? std::vector<LegacyIcon>() : legacy_->icons();
}

}  // namespace orvo
