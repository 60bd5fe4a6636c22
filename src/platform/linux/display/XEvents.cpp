#include "platform/linux/display/XEvents.h"

#include <QGuiApplication>

#include <utility>

namespace orvo {

XEvents::XEvents(Handler handler) : handler_(std::move(handler)) {
  const auto* x11 = qGuiApp != nullptr ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  if (x11 == nullptr || x11->connection() == nullptr) return;
  connection_ = XConnection::borrow(x11->connection(), "display");
  qGuiApp->installNativeEventFilter(this);
}

void XEvents::select(xcb_window_t window, std::uint32_t mask) const {
  auto* x = connection_->get();
  const auto cookie = xcb_get_window_attributes(x, window);
  const auto attributes = owned(xcb_get_window_attributes_reply(x, cookie, nullptr));
  if (!attributes) return;
  const std::uint32_t all = attributes->your_event_mask | mask;
  xcb_change_window_attributes(x, window, XCB_CW_EVENT_MASK, &all);
}

bool XEvents::nativeEventFilter(const QByteArray& type, void* event, qintptr* /*result*/) {
  return type == "xcb_generic_event_t" && handler_(*static_cast<const xcb_generic_event_t*>(event));
}

}  // namespace orvo
