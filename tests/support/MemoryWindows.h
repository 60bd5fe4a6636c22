// Windows that record what they were asked.
#pragma once

#include "platform/Window.h"

#include <vector>

namespace orvo {

class MemoryWindows : public Windows {
 public:
  bool grantsWindows = true;
  std::vector<WindowDescription> made;
  WindowContent* content = nullptr;
  int centered = 0;
  int shown = 0;

  std::unique_ptr<Window> make(const WindowDescription& description, WindowContent& newContent) override {
    if (!grantsWindows) return nullptr;
    made.push_back(description);
    content = &newContent;
    return std::make_unique<Recorder>(*this);
  }

 private:
  class Recorder : public Window {
   public:
    explicit Recorder(MemoryWindows& windows) : windows_(windows) {}
    void center() override { ++windows_.centered; }
    void makeKeyAndOrderFront() override { ++windows_.shown; }

   private:
    MemoryWindows& windows_;
  };
};

}  // namespace orvo
