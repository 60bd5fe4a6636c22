// The system status bar. Owned by main.cpp; main thread only.
#pragma once

#include "platform/StatusBar.h"

namespace orvo {

class CocoaStatusBar final : public StatusBar {
 public:
  std::unique_ptr<StatusItem> statusItem(double length) override;
};

}  // namespace orvo
