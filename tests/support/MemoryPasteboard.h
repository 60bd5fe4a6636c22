// A pasteboard that refuses a text, as the real one does, unless it was cleared first.
#pragma once

#include "platform/Pasteboard.h"

#include <optional>

namespace orvo {

class MemoryPasteboard : public Pasteboard {
 public:
  std::optional<std::string> text = "what was copied before";

  void clearContents() override { text.reset(); }
  void setString(const std::string& newText) override {
    if (!text) text = newText;
  }
};

}  // namespace orvo
