// Where the panel's system controls are, each on a window of the panel: what the menu bar's tree says besides
// rectangles on the screen. Filled by whoever reads the tree, used by whoever lays something over the
// controls. Owned by main.cpp; any thread.
#pragma once

#include "core/Rect.h"

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

  // Of the last reading: where the frame is a control, or a piece cut across one; absent for any other.
  // Windows that are out of sight may have controls at one place: `earlier` of them are passed over.
  std::optional<ControlPlace> of(const Rect& frame, std::size_t earlier) const {
    const std::lock_guard lock(mutex_);
    for (const ControlPlace& place : places_) {
      const Rect& whole = place.frame;
      const bool isPiece = frame.x == whole.x && frame.width == whole.width && frame.y >= whole.y &&
                           frame.y + frame.height <= whole.y + whole.height;
      if (isPiece && earlier-- == 0) return place;
    }
    return std::nullopt;
  }

  // Whether no reading has told of any.
  bool isEmpty() const {
    const std::lock_guard lock(mutex_);
    return places_.empty();
  }

  std::optional<List> now() const { return read_(); }

 private:
  Read read_;
  mutable std::mutex mutex_;
  List places_;  // guarded by mutex_
};

}  // namespace orvo
