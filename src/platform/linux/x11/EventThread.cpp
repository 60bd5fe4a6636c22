#include "platform/linux/x11/EventThread.h"

#include <sys/socket.h>

#include <utility>

namespace orvo {

EventThread::EventThread(XConnection& connection, Handler handler)
    : connection_(connection), handler_(std::move(handler)), thread_([this] { run(); }) {}

EventThread::~EventThread() {
  stopping_ = true;
  // The one way to end xcb_wait_for_event that needs no answer of the server.
  shutdown(xcb_get_file_descriptor(connection_.get()), SHUT_RDWR);
  thread_.join();
}

void EventThread::run() {
  while (const auto event = owned(xcb_wait_for_event(connection_.get()))) {
    if (eventCode(*event) == 0) {
      connection_.sayUnexpected(*reinterpret_cast<const xcb_generic_error_t*>(event.get()));
    } else {
      handler_(*event);
    }
  }
  if (!stopping_) connection_.say("the X server has gone");
}

}  // namespace orvo
