// The general pasteboard over Qt's clipboard. Owned by main.cpp; main thread only.
#pragma once

#include "platform/Pasteboard.h"

namespace orvo {

class QtPasteboard final : public Pasteboard {
 public:
  void clearContents() override;
  void setString(const std::string& text) override;
};

}  // namespace orvo
