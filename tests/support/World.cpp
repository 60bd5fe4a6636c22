#include "support/World.h"

#include <sstream>

namespace orvo {

namespace {

using M = MemoryPlatform;
using W = World;
using Step = MemoryFramework::Step;

const std::vector<NamedApp> bothApps{{appOne, appOne}, {appTwo, appTwo}};
const std::vector<NamedApp> twoAlone{{appTwo, "two"}};
const FrameworkError refusal{"Some.Domain", 7, "not now"};
constexpr Point onClock{M::clockFrame.x, M::clockFrame.y};

const std::map<std::string, void (*)(M&)> platformSteps{
    {"elsewhere", [](M& m) { m.bundle.bundlePath = "/Downloads/Orvo.app"; }},
    {"noframework", [](M& m) { m.framework.loads = false; }},
    {"nohost", [](M& m) { m.workspace.quit(std::string(menuBarHostBundle)); }},
    {"trusted", [](M& m) { m.accessibility.trusted = true; }},
    {"untrusted", [](M& m) { m.accessibility.trusted = false; }},
    {"taps", [](M& m) { m.eventTaps.creationFails = false; }},
    {"notaps", [](M& m) { m.eventTaps.creationFails = true; }},
    {"taken", [](M& m) { m.hotKeys.registerStatus = -9878; }},
    {"neveropened", [](M& m) { m.userDefaults.booleans.clear(); }},
    {"nologin", [](M& m) { m.loginItem.failure = "full"; }},
    {"controls", [](M& m) { m.showItems(bothApps); }},
    {"nocontrols", [](M& m) { m.accessibility.trees.clear(); }},
    {"onlytwo", [](M& m) { m.showItems(twoAlone); }},
    {"onequits", [](M& m) { m.workspace.quit(appOne); }},
    {"echo", [](M& m) { m.framework.onActivate = [&m](std::size_t number) { m.framework.answer(number); }; }},
    {"null", [](M& m) { m.framework.missing = {"assertion"}; }},
    {"broken", [](M& m) { m.framework.raises[Step::activate] = MemoryFramework::raising("broken"); }},
    {"whole", [](M& m) { m.framework.missing.clear(), m.framework.raises.erase(Step::activate); }},
    {"press", [](M& m) { m.hotKeys.press(); }},
    {"click", [](M& m) { m.eventTaps.press(onClock); }},
    {"losttap", [](M& m) { m.eventTaps.disable(EventType::tapDisabledByUserInput); }},
    {"launch", [](M& m) { m.workspace.center.post(Notification::applicationLaunched); }},
    {"exit", [](M& m) { m.workspace.center.post(Notification::applicationTerminated); }},
    {"sleep", [](M& m) { m.workspace.center.post(Notification::willSleep); }},
    {"wake", [](M& m) { m.workspace.center.post(Notification::didWake); }},
    {"hostends", [](M& m) { m.workspace.center.post(Notification::menuBarHostTerminated); }},
    {"layout", [](M& m) { m.workspace.center.post(Notification::menuBarLayoutChanged); }},
    {"screens", [](M& m) { m.application.center.post(Notification::screenParametersChanged); }},
    {"otherhides", [](M& m) { m.workspace.tellOthers({"Other"}); }},
    {"task", [](M& m) { m.mainQueue.runOne(); }},
    {"turn", [](M& m) { m.mainQueue.runPosted(); }},
    {"scan", [](M& m) { m.scanExecutor.runOne(); }},
    {"settle", [](M& m) { m.settle(); }}};

const std::map<std::string, void (*)(W&)> modelSteps{
    {"hide", [](W& w) { w.model->hideSelected(); }},
    {"yes", [](W& w) { w.answerLast(); }},
    {"no", [](W& w) { w.answerLast(refusal); }},
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

}  // namespace

World::World(const std::function<void(MemoryPlatform&)>& prepare) {
  memory.showItems(bothApps);
  memory.userDefaults.setData(preferencesKey, R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":7})");
  memory.userDefaults.setBoolean(openedSettingsKey, true);
  prepare(memory);
  delegate = AppDelegate::make(memory.platform);
  model = &delegate->model();
  memory.application.setDelegate(delegate.get());
  memory.application.run();
  memory.settle();
}

void World::play(MemoryPlatform& platform, const std::string& steps) {
  std::istringstream words(steps);
  for (std::string word; words >> word;) platformSteps.at(word)(platform);
}

void World::play(const std::string& steps) {
  std::istringstream words(steps);
  for (std::string word; words >> word;) {
    if (word.starts_with("delay")) {
      OrvoPreferences changed = model->preferences();
      changed.autoRehideSeconds = std::stoll(word.substr(5));
      model->setPreferences(changed);
    } else if (word.ends_with("ms")) {
      advance(MainQueue::Duration(std::stoll(word)));
    } else if (modelSteps.contains(word)) {
      modelSteps.at(word)(*this);
    } else {
      play(memory, word);
    }
  }
}

void World::answerLast(const std::optional<FrameworkError>& error) {
  memory.framework.answer(requests() - 1, error);
  memory.settle();
}

void World::advance(MainQueue::Duration time) {
  const auto end = memory.mainQueue.now() + time;
  while (memory.mainQueue.now() < end) {
    memory.mainQueue.advance(std::min(end - memory.mainQueue.now(), MainQueue::Duration{100}));
    memory.settle();
  }
}

bool World::hidesAgain() {
  const std::size_t before = requests();
  play("6999ms");
  const bool early = requests() != before;
  play("1ms");
  return !early && requests() > before;
}

OrvoView& World::view() {
  if (memory.windows.content == nullptr) delegate->applicationShouldHandleReopen(false);
  memory.settle();
  return dynamic_cast<OrvoView&>(*memory.windows.content);
}

std::string World::listed() const {
  std::string names;
  for (const DiscoveredApp& app : model->apps()) names += (names.empty() ? "" : " ") + app.name;
  return names;
}

}  // namespace orvo
