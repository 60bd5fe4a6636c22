#include "platform/linux/session/ClientWindows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <xcb/res.h>

namespace orvo {

namespace {

template <typename Reply>
struct Freed {
  void operator()(Reply* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Freed<Reply>>;

template <typename Reply>
Owned<Reply> own(Reply* reply) {
  return Owned<Reply>(reply);
}

// In 32-bit units: more windows than any server hands out identifiers for.
constexpr std::uint32_t listLimit = 1U << 20U;

// Windows name one or two.
constexpr std::uint32_t mostTypes = 16;

xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
  auto iterator = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; iterator.rem > 1 && number > 0; --number) xcb_screen_next(&iterator);
  return iterator.rem > 0 ? iterator.data : nullptr;
}

}  // namespace

void ClientWindows::begin() {
  int screenNumber = 0;
  connection_.reset(xcb_connect(nullptr, &screenNumber));
  xcb_screen_t* screen = nullptr;
  if (xcb_connection_has_error(connection_.get()) == 0) screen = screenOf(connection_.get(), screenNumber);
  if (screen == nullptr) return connection_.reset();
  root_ = screen->root;
  clientList_ = atom("_NET_CLIENT_LIST");
  windowProcess_ = atom("_NET_WM_PID");
  windowType_ = atom("_NET_WM_WINDOW_TYPE");
  applicationTypes_ = {atom("_NET_WM_WINDOW_TYPE_NORMAL"), atom("_NET_WM_WINDOW_TYPE_DIALOG")};
  askServer_ = serverTellsProcesses();
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &mask);
  notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, &ClientWindows::handleEvents);
  readWindows();
  handleEvents();
}

xcb_atom_t ClientWindows::atom(const char* name) {
  const auto cookie = xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
  const auto reply = own(xcb_intern_atom_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_NONE);
}

bool ClientWindows::serverTellsProcesses() {
  const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_res_id);
  if (extension == nullptr || extension->present == 0) return false;
  const auto cookie = xcb_res_query_version(connection_.get(), 1, 2);
  const auto reply = own(xcb_res_query_version_reply(connection_.get(), cookie, nullptr));
  return reply && std::pair(reply->server_major, reply->server_minor) >= std::pair<std::uint16_t, std::uint16_t>(1, 2);
}

// Events can be read from the socket while a reply is awaited, so it goes on until none is left.
void ClientWindows::handleEvents() {
  while (takeChange()) readWindows();
  checkConnection();
}

bool ClientWindows::takeChange() {
  bool changed = false;
  while (const auto event = own(xcb_poll_for_event(connection_.get()))) {
    if ((event->response_type & 0x7FU) != XCB_PROPERTY_NOTIFY) continue;
    changed |= reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->atom == clientList_;
  }
  return changed;
}

void ClientWindows::readWindows() {
  const std::vector<xcb_window_t> windows = windowList();
  std::vector<xcb_window_t> fresh;
  for (const xcb_window_t window : windows) {
    if (!known_.contains(window)) fresh.push_back(window);
  }
  known_ = {windows.begin(), windows.end()};
  reportOwners(fresh);
}

std::vector<xcb_window_t> ClientWindows::windowList() {
  const auto cookie = xcb_get_property(connection_.get(), 0, root_, clientList_, XCB_ATOM_WINDOW, 0, listLimit);
  const auto reply = own(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* first = static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

// All questions go out before the first answer is awaited.
void ClientWindows::reportOwners(const std::vector<xcb_window_t>& windows) {
  struct Questions {
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t claimed;
    unsigned int connected;
  };
  std::vector<Questions> asked;
  for (const xcb_window_t window : windows) {
    const auto type = xcb_get_property(connection_.get(), 0, window, windowType_, XCB_ATOM_ATOM, 0, mostTypes);
    const auto claimed = xcb_get_property(connection_.get(), 0, window, windowProcess_, XCB_ATOM_CARDINAL, 0, 1);
    const xcb_res_client_id_spec_t owner{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    asked.push_back({type, claimed, askServer_ ? xcb_res_query_client_ids(connection_.get(), 1, &owner).sequence : 0U});
  }
  for (const Questions& questions : asked) {
    const bool ofApplication = isOfApplication(questions.type);
    const auto claimed = claimedProcess(questions.claimed);
    const auto connected = askServer_ ? connectedProcess(questions.connected) : std::nullopt;
    if (!ofApplication) continue;
    // A sandboxed program claims the number that it has inside its sandbox.
    if (claimed && owner_(*claimed)) continue;
    if (connected) owner_(*connected);
  }
}

// One that names no type is an ordinary window.
bool ClientWindows::isOfApplication(xcb_get_property_cookie_t cookie) {
  const auto reply = own(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->format != 32 || reply->value_len == 0) return true;
  const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
  return std::any_of(first, first + reply->value_len,
                     [this](xcb_atom_t type) { return applicationTypes_.contains(type); });
}

std::optional<std::int32_t> ClientWindows::claimedProcess(xcb_get_property_cookie_t cookie) {
  const auto reply = own(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->format != 32 || reply->value_len < 1) return std::nullopt;
  return *static_cast<const std::int32_t*>(xcb_get_property_value(reply.get()));
}

std::optional<std::int32_t> ClientWindows::connectedProcess(unsigned int cookie) {
  const auto reply = own(xcb_res_query_client_ids_reply(connection_.get(), {cookie}, nullptr));
  if (!reply) return std::nullopt;
  for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0; xcb_res_client_id_value_next(&id)) {
    if ((id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) == 0U) continue;
    if (xcb_res_client_id_value_value_length(id.data) < 1) continue;
    return static_cast<std::int32_t>(*xcb_res_client_id_value_value(id.data));
  }
  return std::nullopt;
}

void ClientWindows::checkConnection() {
  if (xcb_connection_has_error(connection_.get()) == 0) return;
  notifier_->setEnabled(false);
  std::fputs("Orvo: the X server is gone; programs with windows are no longer followed.\n", stderr);
}

}  // namespace orvo
