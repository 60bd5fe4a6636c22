// The remembered frame of a window: where its outer edge stands and how large its content is, in
// logical pixels. A plain value; any thread.
#pragma once

#include <QRect>

#include <optional>
#include <string>

namespace orvo {

struct WindowFrame {
  QPoint position;
  QSize size;

  bool operator==(const WindowFrame&) const = default;
};

// "x y width height"; any other text is no frame.
std::string encode(const WindowFrame& frame);
std::optional<WindowFrame> decodeWindowFrame(const std::string& text);

// Moved and resized so that the whole of it lies on one of `screens` (the one that it shares most with, else
// the first), and is no smaller than `minimum` where the screen is not. Absent without a screen.
std::optional<WindowFrame> fitted(const WindowFrame& frame, QSize minimum, const QList<QRect>& screens);

}  // namespace orvo
