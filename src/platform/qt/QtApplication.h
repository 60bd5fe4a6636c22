// The shared application over QGuiApplication. Owned by main.cpp; main thread only. The system's
// wish that the program end (SIGTERM, SIGINT, SIGHUP, the end of the session) counts as terminate(),
// so that the delegate can reveal every icon first.
#pragma once

#include "platform/Application.h"
#include "platform/qt/TerminationSignals.h"

#include <QObject>

#include <functional>
#include <utility>

class QGuiApplication;
class QKeyEvent;

namespace orvo {

class QtApplication final : public QObject, public Application {
 public:
  // `application` outlives this object.
  explicit QtApplication(QGuiApplication& application);
  ~QtApplication() override = default;
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  // Asked once when run() begins: false ends it before the delegate hears anything.
  void setAdmission(std::function<bool()> admission) { admission_ = std::move(admission); }
  // A request to open the application that is already running; one that comes before launching has
  // finished waits for it.
  void reopen();
  // Runs `handler` with `type` as the current event.
  void handleEvent(EventType type, const std::function<void()>& handler);

  void setDelegate(ApplicationDelegate* delegate) override;
  void run() override;
  void terminate() override;
  void relaunch() override;
  // Whether the program is to start again once everything of it has gone.
  bool wantsRelaunch() const { return wantsRelaunch_; }
  void setActivationPolicy(ActivationPolicy policy) override;
  void setMainMenu(const Menu& menu) override { mainMenu_ = menu; }
  void activateIgnoringOtherApps() override;
  std::optional<EventType> currentEventType() const override { return currentEvent_; }
  NotificationCenter& notificationCenter() override { return notificationCenter_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class Phase { prepared, launched, terminated };

  void announceEnd();
  bool performKeyEquivalent(const QKeyEvent& event);

  ApplicationDelegate* delegate_ = nullptr;
  std::function<bool()> admission_;
  Phase phase_ = Phase::prepared;
  bool reopenWaits_ = false;
  bool wantsRelaunch_ = false;
  Menu mainMenu_;
  std::optional<EventType> currentEvent_;
  NotificationCenter notificationCenter_;
  TerminationSignals signals_{[this] { terminate(); }};
};

}  // namespace orvo
