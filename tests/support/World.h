// Orvo, launched over the platform in memory: two applications show items beside a clock, the first is marked to be
// hidden, and revealed icons hide again after 7 seconds. Its settings were opened at an earlier launch, so that no
// window shows where nothing is missing. Main thread only; one at a time.
#pragma once

#include "app/AppDelegate.h"
#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"
#include "ui/OrvoView.h"

namespace orvo {

inline constexpr const char* appOne = "org.example.One";
inline constexpr const char* appTwo = "org.example.Two";
inline constexpr const char* preferencesKey = "Quillet.Preferences.v1";
inline constexpr const char* openedSettingsKey = "Orvo.HasOpenedSettings";

class World {
 public:
  // `prepare` changes the platform before the launch; it may be told by the names of steps.
  explicit World(const std::function<void(MemoryPlatform&)>& prepare);
  explicit World(const std::string& steps = "") : World([&](MemoryPlatform& platform) { play(platform, steps); }) {}

  // Takes steps by their names, which World.cpp tells, parted by blanks. "400ms" lets time pass, "delay7" chooses a
  // delay in seconds.
  void play(const std::string& steps);
  // The same for what happens to the platform alone, also before the launch.
  static void play(MemoryPlatform& platform, const std::string& steps);

  // Answers the latest hide request.
  void answerLast(const std::optional<FrameworkError>& error = std::nullopt);
  // Scans and posted tasks run while the time passes.
  void advance(MainQueue::Duration time);
  // Lets the seven seconds pass; whether revealed icons hide again then, and not before.
  bool hidesAgain();
  // What the settings say; opens them, which reveals, when they have not been open yet.
  OrvoView& view();

  std::size_t requests() const { return memory.framework.activations.size(); }
  std::size_t scans() const { return memory.accessibility.asked.size(); }
  std::string message() const { return model->message().value_or(""); }
  bool guarded() const { return memory.eventTaps.valid && !memory.eventTaps.regions.empty(); }
  // The names in the list.
  std::string listed() const;

  MemoryPlatform memory;
  std::shared_ptr<AppDelegate> delegate;
  // The delegate's.
  OrvoModel* model = nullptr;
};

}  // namespace orvo
