// Orvo, launched over the platform in memory: two applications show items beside a clock, the first is marked to be
// hidden, and revealed icons hide again after 7 seconds. Its settings were opened at an earlier launch, so that no
// window shows where nothing is missing. Main thread only; one at a time.
#pragma once

#include "app/AppDelegate.h"
#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"

namespace orvo {

inline constexpr const char* appOne = "org.example.One";
inline constexpr const char* appTwo = "org.example.Two";
inline const std::vector<NamedApp> both{{appOne, appOne}, {appTwo, appTwo}}, onlyTwo{{appTwo, "two"}};
inline const FrameworkError notNow{"Some.Domain", 7, "not now"};
inline constexpr Point onClock{MemoryPlatform::clockFrame.x, MemoryPlatform::clockFrame.y};
inline constexpr const char* preferencesKey = "Quillet.Preferences.v1";

class World {
 public:
  // The steps change the platform before the launch.
  explicit World(const std::string& steps = "") : World(Unprepared{}) {
    memory.showItems(both);
    memory.userDefaults.setData(preferencesKey, R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":7})");
    play(steps);
    launch();
  }
  void launch() {
    delegate = AppDelegate::make(memory.platform);
    model = &delegate->model();
    memory.application.setDelegate(delegate.get());
    memory.application.run();
    memory.settle();
  }

  // Steps by their names, parted by blanks. "400ms" lets time pass, "delay7" chooses a delay in seconds; a path is
  // where Orvo lies.
  void play(const std::string& steps) {
    std::istringstream words(steps);
    for (std::string word; words >> word;) {
      if (word.starts_with("delay")) {
        OrvoPreferences changed = model->preferences();
        changed.autoRehideSeconds = std::stoll(word.substr(5));
        model->setPreferences(changed);
      } else if (word.starts_with("/")) {
        memory.bundle.bundlePath = word;
      } else if (word.ends_with("ms")) {
        const auto end = memory.mainQueue.now() + MainQueue::Duration(std::stoll(word));
        for (; memory.mainQueue.now() < end; memory.settle())
          memory.mainQueue.advance(std::min(end - memory.mainQueue.now(), MainQueue::Duration{100}));
      } else {
        stepsByName().at(word)(*this);
      }
    }
  }
  void answerLast(const std::optional<FrameworkError>& error = std::nullopt) {
    memory.framework.answer(requests() - 1, error);
    memory.settle();
  }
  // Lets the seven seconds pass; how often revealed icons are hidden again then, 99 where it is before.
  std::size_t hidesAgain() {
    const std::size_t before = requests();
    play("6999ms");
    const bool early = requests() != before;
    play("1ms");
    return early ? 99 : requests() - before;
  }

  std::size_t requests() const { return memory.framework.activations.size(); }
  std::size_t scans() const { return memory.accessibility.asked.size(); }
  std::string message() const { return model->message().value_or(""); }
  bool guarded() const { return memory.eventTaps.valid && !memory.eventTaps.regions.empty(); }

  MemoryPlatform memory;
  std::shared_ptr<AppDelegate> delegate;
  // The delegate's.
  OrvoModel* model = nullptr;

 protected:
  struct Unprepared {};
  explicit World(Unprepared) { memory.userDefaults.setBoolean("Orvo.HasOpenedSettings", true); }

 private:
  using W = World;
  static const std::map<std::string, void (*)(W&)>& stepsByName() {
    static const std::map<std::string, void (*)(W&)> all{
        {"noframework", [](W& w) { w.memory.framework.loads = false; }},
        {"nohost", [](W& w) { w.memory.workspace.quit(std::string(menuBarHostBundle)); }},
        {"trusted", [](W& w) { w.memory.accessibility.trusted = true; }},
        {"untrusted", [](W& w) { w.memory.accessibility.trusted = false; }},
        {"taps", [](W& w) { w.memory.eventTaps.creationFails = false; }},
        {"notaps", [](W& w) { w.memory.eventTaps.creationFails = true; }},
        {"taken", [](W& w) { w.memory.hotKeys.registerStatus = -9878; }},
        {"nowindow", [](W& w) { w.memory.windows.grantsWindows = false; }},
        {"noitem", [](W& w) { w.memory.statusBar.grantsItems = false; }},
        {"nobutton", [](W& w) { w.memory.statusBar.grantsButtons = false; }},
        {"atlogin", [](W& w) { w.memory.loginItem.current = LoginItemStatus::enabled; }},
        {"nologin", [](W& w) { w.memory.loginItem.failure = "full"; }},
        {"controls", [](W& w) { w.memory.showItems(both); }},
        {"nocontrols", [](W& w) { w.memory.accessibility.trees.clear(); }},
        {"onlytwo", [](W& w) { w.memory.showItems(onlyTwo); }},
        {"onequits", [](W& w) { w.memory.workspace.quit(appOne); }},
        {"null", [](W& w) { w.memory.framework.missing = {"assertion"}; }},
        {"broken", [](W& w) { w.memory.framework.refuses = true; }},
        {"whole", [](W& w) { w.memory.framework.missing.clear(), w.memory.framework.refuses = false; }},
        {"press", [](W& w) { w.memory.hotKeys.function(w.memory.hotKeys.userData); }},
        {"click", [](W& w) { w.memory.eventTaps.press(onClock); }},
        {"losttap", [](W& w) { w.memory.eventTaps.disable(EventType::tapDisabledByUserInput); }},
        {"endedtap", [](W& w) { w.memory.eventTaps.ended = true, w.play("losttap"); }},
        {"launch", [](W& w) { w.memory.workspace.center.post(Notification::applicationLaunched); }},
        {"exit", [](W& w) { w.memory.workspace.center.post(Notification::applicationTerminated); }},
        {"sleep", [](W& w) { w.memory.workspace.center.post(Notification::willSleep); }},
        {"wake", [](W& w) { w.memory.workspace.center.post(Notification::didWake); }},
        {"hostends", [](W& w) { w.memory.workspace.center.post(Notification::menuBarHostTerminated); }},
        {"layout", [](W& w) { w.memory.workspace.center.post(Notification::menuBarLayoutChanged); }},
        {"screens", [](W& w) { w.memory.application.center.post(Notification::screenParametersChanged); }},
        {"elsewhere", [](W& w) { w.memory.workspace.tellOthers({}, true); }},
        {"otherhides", [](W& w) { w.memory.workspace.tellOthers({"Other"}); }},
        {"task", [](W& w) { w.memory.mainQueue.runOne(); }},
        {"turn", [](W& w) { w.memory.mainQueue.runPosted(); }},
        {"scan", [](W& w) { w.memory.scanExecutor.runOne(); }},
        {"settle", [](W& w) { w.memory.settle(); }},
        {"hide", [](W& w) { w.model->hideSelected(); }},
        {"yes", [](W& w) { w.answerLast(); }},
        {"no", [](W& w) { w.answerLast(notNow); }},
        {"reveal", [](W& w) { w.model->reveal(false); }},
        {"peek", [](W& w) { w.model->reveal(true); }},
        {"refresh", [](W& w) { w.model->refresh(); }},
        {"later", [](W& w) { w.model->refreshLater(); }},
        {"pickone", [](W& w) { w.model->setRule(IconRule::hidden, appOne); }},
        {"picktwo", [](W& w) { w.model->setRule(IconRule::hidden, appTwo); }},
        {"dropone", [](W& w) { w.model->setRule(IconRule::visible, appOne); }},
        {"ask", [](W& w) { w.model->requestAccessibility(); }},
        {"search", [](W& w) { w.model->searchText = " "; }},
        {"login", [](W& w) { w.model->setLoginItem(true); }},
        {"stop", [](W& w) { w.model->stop(); }}};
    return all;
  }
};

}  // namespace orvo
