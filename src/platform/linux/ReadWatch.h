// Tells once that a descriptor has something to read, and again after each start(). Owned by whoever has the
// descriptor, before which it goes; the thread of its event loop.
#pragma once

#include <sys/epoll.h>

#include <cstdint>
#include <functional>
#include <utility>

#include "platform/linux/BusHandles.h"

namespace orvo {

class ReadWatch {
 public:
  ReadWatch(sd_event* loop, int descriptor, std::function<void()> readable) : readable_(std::move(readable)) {
    sd_event_source* source = nullptr;
    sd_event_add_io(loop, &source, descriptor, EPOLLIN, &ReadWatch::tell, this);
    source_.reset(source);
    start();
  }
  ReadWatch(const ReadWatch&) = delete;
  ReadWatch& operator=(const ReadWatch&) = delete;
  ~ReadWatch() = default;

  void start() { sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT); }
  void stop() { sd_event_source_set_enabled(source_.get(), SD_EVENT_OFF); }

 private:
  static int tell(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/, void* watch) {
    static_cast<ReadWatch*>(watch)->readable_();
    return 0;
  }

  std::function<void()> readable_;
  EventSource source_;
};

}  // namespace orvo
