#include "platform/linux/ApplicationLookup.h"

#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

namespace orvo {

// What the files of a process say. Of process 1, while it is "one", and of those above 10 they are held up.
std::atomic<const char*> name1 = "one";
std::atomic<int> held = 0;
std::shared_future<void> gate;
std::optional<ApplicationIdentity> identifyProcess(std::int32_t process, const std::filesystem::path&,
                                                   const DesktopEntries&) {
  const std::string name = process == 1 ? name1.load() : std::to_string(process);
  if (name == "one" || process > 10) ++held, gate.wait();
  return process == 3 ? std::nullopt : std::optional(ApplicationIdentity{name, {}, {}, {}});
}

using Told = std::vector<std::string>;

struct Asker {
  explicit Asker(std::chrono::milliseconds limit) : lookup(loop.get(), limit) {
    name1 = "one";
    held = 0;
    gate = opened.get_future().share();
    lookup.onLate = [this](std::int32_t, const ApplicationIdentity& known) {
      told.push_back("late " + known.bundleIdentifier);
    };
  }
  void ask(std::int32_t process) {
    lookup.find(process, [this](const ApplicationIdentity& known) { told.push_back(known.bundleIdentifier); });
  }
  Told hear(std::size_t count) {
    constexpr std::uint64_t limit = 10'000'000;  // microseconds
    while (told.size() < count && sd_event_run(loop.get(), limit) > 0) {
    }
    return std::exchange(told, {});
  }

  std::promise<void> opened;
  Told told;
  EventLoop loop = newLoop();
  ApplicationLookup lookup;
};

TEST(ApplicationLookupTest, AnswersComeInTheOrderOfAskingThoseAboutOneProcessTogether) {
  Asker asker(std::chrono::hours(1));
  for (const int process : {1, 2, 3, 2}) asker.ask(process);
  EXPECT_TRUE(asker.lookup.isExpecting() && asker.told.empty());
  asker.opened.set_value();
  EXPECT_EQ(asker.hear(4), (Told{"one", "2", "2", ""}));
}

TEST(ApplicationLookupTest, WhatIsHeldUpIsGivenUpAndToldLateAndAnewWhereItWasAskedAboutAgain) {
  Asker asker(std::chrono::milliseconds(0));
  const auto given = [&](std::int32_t process) {
    asker.ask(process);
    return asker.hear(1);
  };
  EXPECT_EQ(given(1), Told{""});
  while (held == 0) std::this_thread::yield();
  name1 = "another";  // which has the number now
  for (const int process : {1, 11, 12, 13, 14, 15, 16, 17, 2}) EXPECT_EQ(given(process), Told{""});
  asker.opened.set_value();
  Told late = asker.hear(9);
  std::sort(late.begin(), late.end());
  const Told all{"late 11", "late 12", "late 13", "late 14", "late 15", "late 16", "late 17", "late 2", "late another"};
  EXPECT_EQ(late, all);
}

}  // namespace orvo
