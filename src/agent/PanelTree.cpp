#include "agent/PanelTree.h"

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

// A tree that is another one again after it has been found anew is still being built.
constexpr int mostFinds = 2;

// Panels come first among a program's windows; a panel that opens more is out of its mind.
constexpr std::size_t mostWindows = 100;

}  // namespace

void PanelTree::read(std::int32_t panelProcess, Answer answer) {
  process_ = panelProcess;
  answer_ = std::move(answer);
  finds_ = 0;
  if (known_.process == process_) return measure();
  find();
}

void PanelTree::find() {
  ++finds_;
  known_ = {};
  bus_.askApplications([this](const Accessible& application, std::int32_t process) {
    if (process != process_ || !known_.panel.service.empty()) return;
    known_.panel = application;
    findDocks();
  });
  // Another application may have gone meanwhile; what is missing of the panel shows when it is measured.
  bus_.whenSettled([this](AccessibilityBus::Outcome outcome) {
    if (outcome != AccessibilityBus::Outcome::unanswered) return measure();
    known_ = {};
    answer(std::nullopt);
  });
}

void PanelTree::findDocks() {
  bus_.askChildren(known_.panel, [this](const std::vector<Accessible>& windows) {
    known_.windows = windows;
    for (std::size_t index = 0; index < std::min(windows.size(), mostWindows); ++index) {
      bus_.askIsDock(windows[index], [this, index](bool isDock) {
        if (isDock) findPlugins(index);
      });
    }
  });
}

void PanelTree::findPlugins(std::size_t index) {
  known_.process = process_;
  DockTree& dock = known_.docks[index];
  dock.frame = known_.windows[index];
  bus_.askChildren(dock.frame, [this, &dock](const std::vector<Accessible>& containers) {
    dock.containers = containers;
    if (containers.empty()) return;
    bus_.askChildren(containers.front(), [&dock](const std::vector<Accessible>& plugins) { dock.plugins = plugins; });
  });
}

void PanelTree::measure() {
  isOutdated_ = false;
  docks_.clear();
  if (known_.process != 0) expectChildren(known_.panel, known_.windows);
  for (const auto& [index, dock] : known_.docks) measure(index, dock);
  bus_.whenSettled([this](AccessibilityBus::Outcome outcome) { measured(outcome); });
}

void PanelTree::measure(std::size_t index, const DockTree& dock) {
  docks_[index].places.resize(dock.plugins.size());
  bus_.askExtents(dock.frame, AccessibilityBus::Coordinates::screen,
                  [this, index](const Rect& extents) { docks_[index].frame = extents; });
  expectChildren(dock.frame, dock.containers);
  if (!dock.containers.empty()) expectChildren(dock.containers.front(), dock.plugins);
  for (std::size_t place = 0; place < dock.plugins.size(); ++place) {
    bus_.askExtents(dock.plugins[place], AccessibilityBus::Coordinates::window,
                    [this, index, place](const Rect& extents) { docks_[index].places[place] = extents; });
  }
}

void PanelTree::expectChildren(const Accessible& parent, const std::vector<Accessible>& children) {
  bus_.askChildren(
      parent, [this, &children](const std::vector<Accessible>& now) { isOutdated_ = isOutdated_ || now != children; });
}

void PanelTree::measured(AccessibilityBus::Outcome outcome) {
  if (outcome == AccessibilityBus::Outcome::complete && !isOutdated_) {
    std::vector<Dock> docks;
    for (const auto& [index, dock] : docks_) docks.push_back(dock);
    return answer(docks);
  }
  known_ = {};
  // Who does not answer now will not answer other questions either.
  if (outcome == AccessibilityBus::Outcome::unanswered || finds_ == mostFinds) return answer(std::nullopt);
  find();
}

void PanelTree::answer(const std::optional<std::vector<Dock>>& docks) { std::exchange(answer_, nullptr)(docks); }

}  // namespace orvo
