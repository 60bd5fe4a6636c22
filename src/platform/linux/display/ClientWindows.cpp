#include "platform/linux/display/ClientWindows.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvo {

namespace {

// How long changes gather: any client may make as many as it likes.
constexpr std::chrono::milliseconds gatheringTime{100};

// Windows name one or two.
constexpr std::uint32_t mostTypes = 16;

}  // namespace

ClientWindows::ClientWindows(Owner owner) : owner_(std::move(owner)) {
  changes_.setSingleShot(true);
  changes_.setInterval(gatheringTime);
  changes_.callOnTimeout([this] { readWindows(); });
}

void ClientWindows::begin() {
  events_ = std::make_unique<XEvents>([this](const xcb_generic_event_t& event) {
    if (isChange(event) && !changes_.isActive()) changes_.start();
    return false;
  });
  const XConnection* const x = events_->connection();
  if (x == nullptr) return;
  clientList_ = x->atom("_NET_CLIENT_LIST");
  windowProcess_ = x->atom("_NET_WM_PID");
  windowType_ = x->atom("_NET_WM_WINDOW_TYPE");
  applicationTypes_ = {x->atom("_NET_WM_WINDOW_TYPE_NORMAL"), x->atom("_NET_WM_WINDOW_TYPE_DIALOG")};
  askServer_ = x->tellsProcesses();
  events_->select(x->root(), XCB_EVENT_MASK_PROPERTY_CHANGE);
  readWindows();
}

bool ClientWindows::isChange(const xcb_generic_event_t& event) const {
  return eventCode(event) == XCB_PROPERTY_NOTIFY &&
         reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == clientList_;
}

void ClientWindows::readWindows() {
  const XConnection& x = *events_->connection();
  const auto windows = x.values(xcb_get_property(x.get(), 0, x.root(), clientList_, XCB_ATOM_WINDOW, 0, mostWindows));
  std::vector<xcb_window_t> fresh;
  for (const xcb_window_t window : windows) {
    if (!known_.contains(window)) fresh.push_back(window);
  }
  known_ = {windows.begin(), windows.end()};
  reportOwners(fresh);
}

// All questions go out before the first answer is awaited.
void ClientWindows::reportOwners(const std::vector<xcb_window_t>& windows) {
  struct Questions {
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t claimed;
    xcb_res_query_client_ids_cookie_t connected;
  };
  const XConnection& x = *events_->connection();
  std::vector<Questions> asked;
  for (const xcb_window_t window : windows) {
    const auto type = xcb_get_property(x.get(), 0, window, windowType_, XCB_ATOM_ATOM, 0, mostTypes);
    const auto claimed = xcb_get_property(x.get(), 0, window, windowProcess_, XCB_ATOM_CARDINAL, 0, 1);
    asked.push_back({type, claimed, askServer_ ? x.askProcess(window) : xcb_res_query_client_ids_cookie_t{}});
  }
  for (const Questions& questions : asked) {
    const bool ofApplication = isOfApplication(questions.type);
    const auto claimed = x.values(questions.claimed);
    const std::int32_t connected = askServer_ ? x.process(questions.connected) : 0;
    if (!ofApplication) continue;
    // A sandboxed program claims the number that it has inside its sandbox.
    if (!claimed.empty() && owner_(static_cast<std::int32_t>(claimed.front()))) continue;
    if (connected != 0) owner_(connected);
  }
}

// One that names no type is an ordinary window.
bool ClientWindows::isOfApplication(xcb_get_property_cookie_t cookie) const {
  const auto types = events_->connection()->values(cookie);
  return types.empty() || std::ranges::any_of(types, [&](xcb_atom_t type) { return applicationTypes_.contains(type); });
}

}  // namespace orvo
