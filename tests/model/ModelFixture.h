// A started model over the platform in memory: two applications show items beside a clock, the first is
// marked to be hidden, and revealed icons hide again after 7 seconds.
#pragma once

#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace orvo {

using namespace std::chrono_literals;
using testing::ElementsAre;

inline constexpr const char* one = "org.example.One";
inline constexpr const char* two = "org.example.Two";
inline constexpr const char* preferencesKey = "Quillet.Preferences.v1";
inline constexpr MainQueue::Duration timeout = 5s;
inline constexpr MainQueue::Duration rehideDelay = 7s;
inline const FrameworkError refusal{"Some.Domain", 7, "not now"};
inline constexpr const char* refused = "Could not hide icons: not now";
inline constexpr const char* timedOut = "macOS did not confirm hiding. All icons have been restored.";

class ModelFixture {
 public:
  // `prepare` changes the platform before the model is made.
  explicit ModelFixture(const std::function<void(MemoryPlatform&)>& prepare = {}) {
    memory.showItems({one, two});
    memory.userDefaults.setData(preferencesKey, R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":7})");
    if (prepare) prepare(memory);
    model = OrvoModel::make(memory.platform);
    model->start();
    memory.settle();
  }

  void answerLast(const std::optional<FrameworkError>& error = std::nullopt) {
    memory.framework.answer(requests() - 1, error);
    memory.settle();
  }
  void hide() {
    model->hideSelected();
    answerLast();
  }
  void refresh() {
    model->refresh();
    memory.settle();
  }
  void setDelay(std::int64_t seconds) {
    OrvoPreferences changed = model->preferences();
    changed.autoRehideSeconds = seconds;
    model->setPreferences(changed);
  }
  void advance(MainQueue::Duration time) {
    memory.mainQueue.advance(time);
    memory.settle();
  }
  void post(Notification name) {
    const bool screens = name == Notification::screenParametersChanged;
    (screens ? memory.application.notificationCenter() : memory.workspace.notificationCenter()).post(name);
  }
  void clickClock() {
    MemoryEvent down(EventType::leftMouseDown, {MemoryPlatform::clockFrame.x + 1, MemoryPlatform::clockFrame.y + 1});
    memory.eventTaps.send(down);
  }

  std::size_t requests() const { return memory.framework.activations.size(); }
  std::size_t active() const { return memory.framework.active().size(); }
  std::size_t scans() const { return memory.accessibility.asked.size(); }
  std::string message() const { return model->message().value_or(""); }
  bool hasTap() const { return memory.eventTaps.tap() != nullptr && memory.eventTaps.tap()->valid; }
  bool guarded() const { return hasTap() && !memory.eventTaps.tap()->regions.empty(); }
  bool waitsFor(MainQueue::Duration delay) const {
    const auto& waiting = memory.mainQueue.waiting();
    const MainQueue::Duration due = memory.mainQueue.now() + delay;
    return std::any_of(waiting.begin(), waiting.end(), [&](const auto& task) { return task.due == due; });
  }
  std::vector<std::string> listed() const {
    std::vector<std::string> bundles;
    for (const DiscoveredApp& app : model->apps()) bundles.push_back(app.bundleID);
    return bundles;
  }

  MemoryPlatform memory;
  std::shared_ptr<OrvoModel> model;
};

inline void PrintTo(BarState state, std::ostream* out) {
  *out << std::array{"visible", "applying", "hidden"}.at(static_cast<std::size_t>(state));
}

}  // namespace orvo
