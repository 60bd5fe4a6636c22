#include "ui/settings/WindowFrame.h"

#include <QList>

#include <algorithm>
#include <sstream>

namespace orvo {

namespace {

// Larger than any screen, small enough for sums of two to be exact.
constexpr int farthest = 1 << 20;

bool isSane(const WindowFrame& frame) {
  const auto inReach = [](int value) { return value > -farthest && value < farthest; };
  return inReach(frame.position.x()) && inReach(frame.position.y()) && inReach(frame.size.width()) &&
         inReach(frame.size.height()) && !frame.size.isEmpty();
}

qint64 sharedArea(const QRect& first, const QRect& second) {
  const QRect shared = first & second;
  return shared.isEmpty() ? 0 : static_cast<qint64>(shared.width()) * shared.height();
}

int placed(int position, int length, int screenStart, int screenLength) {
  return std::clamp(position, screenStart, std::max(screenStart, screenStart + screenLength - length));
}

}  // namespace

std::string encode(const WindowFrame& frame) {
  std::ostringstream text;
  text << frame.position.x() << ' ' << frame.position.y() << ' ' << frame.size.width() << ' ' << frame.size.height();
  return text.str();
}

std::optional<WindowFrame> decodeWindowFrame(const std::string& text) {
  std::istringstream stream(text);
  WindowFrame frame;
  stream >> frame.position.rx() >> frame.position.ry() >> frame.size.rwidth() >> frame.size.rheight();
  const bool exact = !stream.fail() && (stream >> std::ws).eof();
  return exact && isSane(frame) ? std::optional(frame) : std::nullopt;
}

std::optional<WindowFrame> fitted(const WindowFrame& frame, QSize minimum, const QList<QRect>& screens) {
  if (screens.isEmpty()) return std::nullopt;
  const QRect wanted(frame.position, frame.size);
  const QRect screen =
      *std::ranges::max_element(screens, {}, [&](const QRect& candidate) { return sharedArea(candidate, wanted); });
  const QSize size = frame.size.expandedTo(minimum).boundedTo(screen.size());
  return WindowFrame{{placed(frame.position.x(), size.width(), screen.x(), screen.width()),
                      placed(frame.position.y(), size.height(), screen.y(), screen.height())},
                     size};
}

}  // namespace orvo
