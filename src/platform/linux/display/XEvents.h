// The X events that Qt's own connection brings, and that connection for questions. Made after the application
// object; main thread only.
#pragma once

#include "platform/linux/x11/XConnection.h"

#include <QAbstractNativeEventFilter>

#include <functional>
#include <memory>

namespace orvo {

class XEvents final : private QAbstractNativeEventFilter {
 public:
  // True for an event of which nobody else shall hear.
  using Handler = std::function<bool(const xcb_generic_event_t&)>;

  explicit XEvents(Handler handler);

  // Null where Qt does not run on an X server; then there are no events either.
  const XConnection* connection() const { return connection_.get(); }

  // Asks for events of a window besides those that Qt, or somebody else here, has asked for.
  void select(xcb_window_t window, std::uint32_t mask) const;

 private:
  bool nativeEventFilter(const QByteArray& type, void* event, qintptr* result) override;

  Handler handler_;
  std::unique_ptr<XConnection> connection_;
};

}  // namespace orvo
