// The status bar: makes StatusNotifierItems. Owned by main.cpp; main thread only.
#pragma once

#include "platform/linux/desktop/StatusNotifierItem.h"

namespace orvo {

class StatusNotifierBar final : public StatusBar {
 public:
  explicit StatusNotifierBar(StatusNotifierServices services) : services_(std::move(services)) {}

  // Panels give every item the same length.
  std::unique_ptr<StatusItem> statusItem(double /*length*/) override {
    return std::make_unique<StatusNotifierItem>(services_);
  }

 private:
  StatusNotifierServices services_;
};

}  // namespace orvo
