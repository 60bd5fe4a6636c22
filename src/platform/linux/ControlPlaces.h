// Where the panel's system controls are, each on a window of the panel: what the menu bar's tree says besides
// rectangles on the screen. Filled by whoever reads the tree, used by whoever lays something over the
// controls. Owned by main.cpp; any thread.
#pragma once

#include "core/Rect.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvo {

// A window of the panel at the moment of a reading. It may have slid out of sight since, or already had.
struct PanelWindow {
  Rect frame;               // on the screen
  std::size_t ordinal = 0;  // among the panel's windows of this size, oldest first

  bool operator==(const PanelWindow&) const = default;
};

struct ControlPlace {
  std::string identifier;  // the control's own, for as long as the panel has it
  Rect frame;              // on the screen, whole even where the tree offers it in pieces
  PanelWindow window;

  bool operator==(const ControlPlace&) const = default;
};

class ControlPlaces {
 public:
  using List = std::vector<ControlPlace>;
  // Reads the tree afresh, for at most 0.2 s; absent where nobody who knows answers. Called on any thread.
  using Read = std::function<std::optional<List>()>;

  explicit ControlPlaces(Read read) : read_(std::move(read)) {}

  void note(List places) {
    const std::lock_guard lock(mutex_);
    places_ = std::move(places);
  }

  // Of the last reading; absent where none was at the point.
  std::optional<ControlPlace> at(Point point) const {
    const std::lock_guard lock(mutex_);
    const auto found =
        std::ranges::find_if(places_, [point](const ControlPlace& place) { return place.frame.contains(point); });
    if (found == places_.end()) return std::nullopt;
    return *found;
  }

  std::optional<List> now() const { return read_(); }

 private:
  Read read_;
  mutable std::mutex mutex_;
  List places_;  // guarded by mutex_
};

}  // namespace orvo
