// A status bar that records what its one item was told and pops no menu up, but keeps it.
#pragma once

#include "platform/StatusBar.h"

#include <optional>
#include <utility>

namespace orvo {

class MemoryStatusItemButton : public StatusItemButton {
 public:
  std::function<void()> action;
  std::uint32_t eventMask = 0;
  std::string label;
  std::string identifier;
  std::string image;
  std::string imageDescription;
  std::string toolTip;
  Rect frame{0, 3, 24, 22};
  // Popped up last, and where; cleared by the test.
  std::optional<Menu> menu;
  Point menuPoint;

  void setAction(std::function<void()> newAction, std::uint32_t mask) override {
    action = std::move(newAction);
    eventMask = mask;
  }
  void setAccessibilityLabel(const std::string& text) override { label = text; }
  void setAccessibilityIdentifier(const std::string& text) override { identifier = text; }
  void setImage(const std::string& symbolName, const std::string& accessibilityDescription) override {
    image = symbolName;
    imageDescription = accessibilityDescription;
  }
  void setToolTip(const std::string& text) override { toolTip = text; }
  Rect bounds() const override { return frame; }
  void popUpMenu(const Menu& newMenu, Point point) override {
    menu = newMenu;
    menuPoint = point;
  }
};

class MemoryStatusBar : public StatusBar {
 public:
  bool grantsItems = true;
  bool grantsButtons = true;

  double length = 0;
  std::string autosaveName;
  std::optional<std::uint32_t> behavior;
  bool visible = false;
  int items = 0;
  MemoryStatusItemButton button;

  std::unique_ptr<StatusItem> statusItem(double itemLength) override {
    length = itemLength;
    return grantsItems ? std::make_unique<Item>(*this) : nullptr;
  }

 private:
  class Item : public StatusItem {
   public:
    explicit Item(MemoryStatusBar& bar) : bar_(bar) { ++bar_.items; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() override { --bar_.items; }
    void setAutosaveName(const std::string& name) override { bar_.autosaveName = name; }
    void setBehavior(std::uint32_t behavior) override { bar_.behavior = behavior; }
    void setVisible(bool visible) override { bar_.visible = visible; }
    StatusItemButton* button() override { return bar_.grantsButtons ? &bar_.button : nullptr; }

   private:
    MemoryStatusBar& bar_;
  };
};

}  // namespace orvo
