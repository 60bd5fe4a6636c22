// The general pasteboard. Owned by main.cpp; main thread only.
#pragma once

#include "platform/Pasteboard.h"

namespace orvo {

class CocoaPasteboard final : public Pasteboard {
 public:
  void clearContents() override;
  void setString(const std::string& text) override;
};

}  // namespace orvo
