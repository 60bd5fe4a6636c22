// Event taps of Quartz event services. Owned by main.cpp; main thread only.
#pragma once

#include "platform/EventTap.h"

namespace orvo {

class QuartzEventTaps final : public EventTaps {
 public:
  std::unique_ptr<EventTapPort> create(EventTapLocation location, EventTapPlacement placement, EventTapOptions options,
                                       std::uint64_t mask, EventTapCallback callback, void* userInfo) override;
  void post(EventTapLocation location, const Event& event) override;
};

}  // namespace orvo
