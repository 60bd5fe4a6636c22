// The few questions that the agent asks on the accessibility bus, in batches. Answers come one by one, and
// each would wake the agent: they are left to gather in the socket and are looked at together. Nothing
// here waits, not even while connecting. Owned by PanelReader; main thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QDeadlineTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <systemd/sd-bus.h>

#include "core/Rect.h"

namespace orvo {

// An object of an application's accessible tree.
struct Accessible {
  std::string service;  // unique bus name
  std::string path;

  bool operator==(const Accessible&) const = default;
};

class AccessibilityBus : public QObject {
  Q_OBJECT

 public:
  enum class Outcome {
    complete,
    refused,     // an error, or an answer of another form, in place of one of the answers
    unanswered,  // somebody is stopped, or gone
  };

  // For everything that is asked between begin() and the next. Long enough for a panel that is starting,
  // short enough that one which was stopped is asked anew soon.
  static constexpr std::chrono::seconds limit{2};

  AccessibilityBus();
  ~AccessibilityBus() override;

  // Keeps the connection of before if it is to the same address and whole.
  void begin(const std::string& address);

  // Handlers are called for answers of the right form only, never from within, and may ask on.
  void askChildren(const Accessible& accessible, std::function<void(const std::vector<Accessible>&)> handler);
  void askIsDock(const Accessible& accessible, std::function<void(bool)> handler);
  enum class Coordinates : std::uint32_t { screen = 0, window = 1 };  // ATSPI_COORD_TYPE_...
  void askExtents(const Accessible& accessible, Coordinates coordinates, std::function<void(const Rect&)> handler);
  void askProcess(const std::string& service, std::function<void(std::uint32_t)> handler);

  // Called once, when every question is answered that was asked since the last such call; at once where
  // none is open.
  void whenSettled(std::function<void(Outcome)> settled);

  // Has this application, and no other, tell when something of it is moved or resized; an empty name ends
  // that. True where it was not told so before: what it was asked until then may be out of date. Lasts
  // until the connection is made anew.
  bool listenTo(const std::string& service);

 Q_SIGNALS:
  // Something of the application listened to has other bounds than it last told, or can tell no more.
  void boundsChanged();

 private:
  using Reader = std::function<bool(sd_bus_message*)>;  // false for an answer of another form
  struct Question {
    AccessibilityBus* bus;
    Reader read;
  };

  template <typename... Arguments>
  void ask(const Accessible& whom, const char* interface, const char* method, Reader reader, const char* types,
           Arguments... arguments);
  static int answered(sd_bus_message* answer, void* question, sd_bus_error* error);

  void sendWish(const char* member);
  static int moved(sd_bus_message* event, void* bus, sd_bus_error* error);
  void heed();

  void take(sd_bus_message* answer, const Question& question);
  std::chrono::milliseconds expectedPause() const;
  void gather();
  void giveUp();
  void drop();
  void settle();

  std::string address_;
  std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> bus_;
  std::list<Question> open_;
  Outcome outcome_ = Outcome::complete;
  bool hasProgressed_ = false;
  std::function<void(Outcome)> settled_;
  QDeadlineTimer deadline_;
  QTimer pause_;

  using Slot = std::unique_ptr<sd_bus_slot, sd_bus_slot* (*)(sd_bus_slot*)>;
  std::string listened_;  // empty for nobody
  Slot match_;            // goes before its bus
  std::unique_ptr<QSocketNotifier> arrivals_;
  std::map<std::string, Rect> bounds_;  // by path, as last told
  bool isMoved_ = false;
};

}  // namespace orvo
