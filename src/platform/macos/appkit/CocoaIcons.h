// Icons of running applications, drawn into plain pictures. Owned by main.cpp; main thread only.
#pragma once

#include "platform/ApplicationIcons.h"

namespace orvo {

class MainQueue;

class CocoaIcons final : public ApplicationIcons {
 public:
  explicit CocoaIcons(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void icon(std::int32_t processIdentifier, int size, Answer answer) override;

 private:
  MainQueue& mainQueue_;
};

}  // namespace orvo
