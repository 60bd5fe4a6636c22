// Pictures of applications for the settings window. Main thread only; never blocks.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace orvo {

// Premultiplied ARGB, row by row from the top, 8 bits each in native byte order. At most 512 pixels
// wide or high.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
};

class ApplicationIcons {
 public:
  using Answer = std::function<void(const std::optional<Picture>&)>;

  virtual ~ApplicationIcons() = default;

  // The icon of a running application, `size` pixels at its longest edge or the nearest that there
  // is; absent when there is no such process or it has no icon. Answers exactly once, never inside
  // the call.
  virtual void icon(std::int32_t processIdentifier, int size, Answer answer) = 0;
};

}  // namespace orvo
