// An event of the X11 tap: what happened, where and when, and the integer fields that were set on it. A
// plain value; any thread.
#pragma once

#include "platform/EventTap.h"
#include "platform/linux/x11/GuardedRegion.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace orvo {

class X11Event : public Event {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  X11Event(EventType type, Point location, Moment moment, std::optional<ControlPoint> control = {})
      : type_(type), location_(location), moment_(moment), control_(std::move(control)) {}

  EventType type() const { return type_; }
  // When the person pressed the button.
  Moment moment() const { return moment_; }
  // What was pressed, if it was a control; it may stand elsewhere by now.
  const std::optional<ControlPoint>& control() const { return control_; }

  Point location() const override { return location_; }
  std::unique_ptr<Event> copy() const override { return std::make_unique<X11Event>(*this); }
  std::int64_t integerValueField(std::uint32_t field) const override {
    const auto found = fields_.find(field);
    return found == fields_.end() ? 0 : found->second;
  }
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override { fields_[field] = value; }

 private:
  EventType type_;
  Point location_;
  Moment moment_;
  std::optional<ControlPoint> control_;
  std::map<std::uint32_t, std::int64_t> fields_;
};

}  // namespace orvo
