// Points and rectangles in global screen coordinates: origin top left, y grows downwards, unit points
// (on X11 one point is one pixel). Plain values; any thread.
#pragma once

#include <algorithm>
#include <cmath>

namespace orvo {

struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const Rect&) const = default;

  // Half open, as CGRectContainsPoint has it: the left and top edges belong to the rectangle, the
  // right and bottom ones do not. A rectangle with negative sizes is standardized first; an empty
  // one contains nothing.
  bool contains(Point point) const {
    const double left = std::min(x, x + width);
    const double top = std::min(y, y + height);
    return point.x >= left && point.x < left + std::fabs(width) && point.y >= top && point.y < top + std::fabs(height);
  }
};

}  // namespace orvo
