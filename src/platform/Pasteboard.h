// The general pasteboard. Main thread only.
#pragma once

#include <string>

namespace orvo {

class Pasteboard {
 public:
  virtual ~Pasteboard() = default;

  virtual void clearContents() = 0;
  // Plain text in UTF-8.
  virtual void setString(const std::string& text) = 0;
};

}  // namespace orvo
