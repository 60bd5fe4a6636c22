// Waits for the events of a connection on a thread of its own, asleep while there are none. Owned by
// an adapter, which may make requests on the connection meanwhile.
#pragma once

#include "platform/linux/x11/XConnection.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace orvo {

class EventThread {
 public:
  // Called on the thread; errors of unchecked requests are not handed over.
  using Handler = std::function<void(const xcb_generic_event_t&)>;

  EventThread(XConnection& connection, Handler handler);
  // Ends the connection's use for good and waits for the handler to return.
  ~EventThread();
  EventThread(const EventThread&) = delete;
  EventThread& operator=(const EventThread&) = delete;

 private:
  void run();

  XConnection& connection_;
  Handler handler_;
  std::atomic<bool> stopping_ = false;
  std::thread thread_;
};

}  // namespace orvo
