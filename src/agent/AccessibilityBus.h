// The few questions that the agent asks on the accessibility bus, in batches. Answers come one by one, and
// each would wake the agent: they are left to gather in the socket and are looked at together. Nothing
// here waits, not even while connecting. Owned by PanelReader, and another by TrayCensus; main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/BusCall.h"
#include "core/Rect.h"
#include "platform/linux/ReadWatch.h"
#include "platform/linux/Timer.h"

namespace orvo {

// An object of an application's accessible tree; its service is a unique name.
using Accessible = BusObject;

class AccessibilityBus {
 public:
  enum class Outcome {
    complete,
    refused,     // an error, or an answer of another form, in place of one of the answers
    unanswered,  // somebody is stopped, or gone
  };

  // For everything that is asked between begin() and the next. Long enough for a panel that is starting,
  // short enough that one which was stopped is asked anew soon.
  static constexpr std::chrono::seconds limit{2};

  explicit AccessibilityBus(sd_event* loop);

  // Keeps the connection of before if it is to the same address and whole.
  void begin(const std::string& address);

  // Of one list; more are not looked at. Far more than applications can run at once, or a panel has of anything.
  static constexpr std::size_t mostChildren = 1000;

  // Handlers are called for answers of the right form only, never from within, and may ask on.
  void askChildren(const Accessible& accessible, std::function<void(const std::vector<Accessible>&)> handler);
  void askIsDock(const Accessible& accessible, std::function<void(const bool&)> handler);
  enum class Coordinates : std::uint32_t { screen = 0, window = 1 };  // ATSPI_COORD_TYPE_...
  void askExtents(const Accessible& accessible, Coordinates coordinates, std::function<void(const Rect&)> handler);
  // Calls the handler for each application that has registered. The bus knows whose process is whose: nobody else is
  // asked anything.
  void askApplications(std::function<void(const Accessible&, std::int32_t process)> handler);

  // Called once, when every question is answered that was asked since the last such call; at once where
  // none is open.
  void whenSettled(std::function<void(Outcome)> settled);

  // Has this application, and no other, tell when something of it is moved or resized; an empty name ends
  // that. True where it was not told so before: what it was asked until then may be out of date. Lasts
  // until the connection is made anew.
  bool listenTo(const std::string& service);

  // Something of the application listened to has other bounds than it last told, or can tell no more.
  std::function<void()> onBoundsChanged;

 private:
  using Reader = std::function<bool(sd_bus_message*)>;  // false for an answer of another form
  using Clock = std::chrono::steady_clock;

  template <typename... Arguments>
  void ask(const Accessible& whom, const char* interface, const char* method, Reader read, const char* types,
           Arguments... arguments);

  void sendWish(const char* member);
  void moved(sd_bus_message* event);
  void heed();

  void take(sd_bus_message* answer, const Reader& read);
  std::chrono::milliseconds expectedPause() const;
  void gather();
  void giveUp();
  void drop();
  void settle();
  void pauseFor(std::chrono::milliseconds pause);

  sd_event* loop_;
  std::string address_;
  BusHandle bus_;
  std::size_t open_ = 0;  // questions without an answer
  Outcome outcome_ = Outcome::complete;
  bool hasProgressed_ = false;
  std::function<void(Outcome)> settled_;
  Clock::time_point deadline_;
  Timer pause_;
  std::chrono::milliseconds pauseLength_{0};

  std::string listened_;  // empty for nobody
  BusSlot match_;
  std::optional<ReadWatch> arrivals_;
  std::map<std::string, Rect> bounds_;  // by path, as last told
  bool isMoved_ = false;
};

}  // namespace orvo
