#include "platform/linux/x11/X11ScreenObserver.h"

#include <xcb/randr.h>

#include <utility>

namespace orvo {

namespace {

// RandR 1.3 can tell of the screens without asking the hardware.
constexpr std::uint32_t randrMajor = 1;
constexpr std::uint32_t randrMinor = 3;

}  // namespace

X11ScreenObserver::X11ScreenObserver(MainQueue& queue, NotificationCenter& center, const std::string& display)
    : queue_(queue),
      center_(center),
      connection_(XConnection::open(display, "screens")),
      alive_(std::make_shared<int>()) {
  if (!connection_) return;
  randr_ = usesRandr();
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_->get(), connection_->root(), XCB_CW_EVENT_MASK, &mask);
  geometry_ = currentGeometry();
  events_ = std::make_unique<EventThread>(*connection_, [this](const xcb_generic_event_t& event) { handle(event); });
}

X11ScreenObserver::~X11ScreenObserver() {
  events_.reset();
  queue_.cancel(settle_);
}

bool X11ScreenObserver::usesRandr() {
  auto* x = connection_->get();
  if (!connection_->hasExtension(xcb_randr_id)) return false;
  randrEvent_ = xcb_get_extension_data(x, &xcb_randr_id)->first_event;
  const auto cookie = xcb_randr_query_version(x, randrMajor, randrMinor);
  const auto version = owned(xcb_randr_query_version_reply(x, cookie, nullptr));
  if (!version || version->major_version < randrMajor || version->minor_version < randrMinor) return false;
  xcb_randr_select_input(x, connection_->root(),
                         XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
  return true;
}

// On the event thread.
void X11ScreenObserver::handle(const xcb_generic_event_t& event) {
  const auto code = eventCode(event);
  const bool randr = randr_ && (code == static_cast<unsigned>(randrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY) ||
                                code == static_cast<unsigned>(randrEvent_ + XCB_RANDR_NOTIFY));
  const bool root = code == XCB_CONFIGURE_NOTIFY &&
                    reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == connection_->root();
  if (!randr && !root) return;
  queue_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) changeSeen();
  });
}

X11ScreenObserver::Geometry X11ScreenObserver::currentGeometry() const {
  auto* x = connection_->get();
  Geometry geometry;
  if (const auto root = owned(xcb_get_geometry_reply(x, xcb_get_geometry(x, connection_->root()), nullptr))) {
    geometry.push_back({0, 0, root->width, root->height});
  }
  if (!randr_) return geometry;
  const auto cookie = xcb_randr_get_screen_resources_current(x, connection_->root());
  const auto resources = owned(xcb_randr_get_screen_resources_current_reply(x, cookie, nullptr));
  if (!resources) return geometry;
  const auto* crtcs = xcb_randr_get_screen_resources_current_crtcs(resources.get());
  const auto count = xcb_randr_get_screen_resources_current_crtcs_length(resources.get());
  for (int index = 0; index < count; ++index) {
    const auto infoCookie = xcb_randr_get_crtc_info(x, crtcs[index], resources->config_timestamp);
    const auto info = owned(xcb_randr_get_crtc_info_reply(x, infoCookie, nullptr));
    if (info && info->mode != XCB_NONE) geometry.push_back({info->x, info->y, info->width, info->height});
  }
  return geometry;
}

void X11ScreenObserver::changeSeen() {
  queue_.cancel(settle_);
  settle_ = queue_.runAfter(screenSettleTime, [this] { settled(); });
}

void X11ScreenObserver::settled() {
  settle_ = MainQueue::Handle::none;
  auto geometry = currentGeometry();
  if (geometry == geometry_) return;
  geometry_ = std::move(geometry);
  center_.post(Notification::screenParametersChanged);
}

}  // namespace orvo
