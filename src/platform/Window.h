// Windows with declarative content. Main thread only.
#pragma once

#include "core/Rect.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvo {

// What a window hosts. The factory that is handed one knows its real type.
class WindowContent {
 public:
  virtual ~WindowContent() = default;
};

// Bits of a window's style, by the platform's numbers.
inline constexpr std::uint32_t windowStyleTitled = 1;
inline constexpr std::uint32_t windowStyleClosable = 2;
inline constexpr std::uint32_t windowStyleMiniaturizable = 4;
inline constexpr std::uint32_t windowStyleResizable = 8;
inline constexpr std::uint32_t windowStyleFullSizeContentView = 32768;

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

// Sizes in points.
struct WindowDescription {
  Size contentSize;
  std::uint32_t styleMask = 0;
  std::string title;
  bool titleVisible = true;
  bool titlebarAppearsTransparent = false;
  std::string frameAutosaveName;
  bool releasedWhenClosed = true;
  Size minimumSize;
};

class Window {
 public:
  virtual ~Window() = default;

  // Where the remembered frame of the autosave name exists, that frame stands.
  virtual void center() = 0;
  virtual void makeKeyAndOrderFront() = 0;
};

class Windows {
 public:
  virtual ~Windows() = default;

  // The content outlives the window. Absent when the system cannot make one, which the adapter
  // reports on standard error.
  virtual std::unique_ptr<Window> make(const WindowDescription& description, WindowContent& content) = 0;
};

}  // namespace orvo
