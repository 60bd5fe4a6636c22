// Prints what the settings window costs: the first showing, a later one, a rescan and a typed key with
// 400 rows, each up to the painted frame, by the clock and in processor time, which tells more on a busy
// machine. Figures of a Debug build mean nothing.
#include "ui/settings/SettingsWorld.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace orvo {

namespace {

// In milliseconds, by the clock and in processor time.
using Cost = std::array<double, 2>;

template <typename Action>
Cost costOf(Action&& action) {
  const std::clock_t before = std::clock();
  QElapsedTimer timer;
  timer.start();
  action();
  return {static_cast<double>(timer.nsecsElapsed()) / 1e6,
          static_cast<double>(std::clock() - before) * 1000 / CLOCKS_PER_SEC};
}

void print(const char* what, std::vector<Cost> costs) {
  std::printf("%-40s", what);
  for (const std::size_t kind : {0U, 1U}) {
    std::ranges::sort(costs, {}, [kind](const Cost& cost) { return cost[kind]; });
    std::printf("  %s: median %5.1f, worst %5.1f ms", kind == 0 ? "elapsed" : "processor",
                costs[costs.size() / 2][kind], costs.back()[kind]);
  }
  std::puts("");
}

// Proportional share of shared pages included.
double proportionalMegabytes() {
  QFile file(QStringLiteral("/proc/self/smaps_rollup"));
  if (!file.open(QIODevice::ReadOnly)) return 0;
  const QByteArray text = file.readAll();
  const auto start = text.indexOf("Pss:") + 4;
  return text.mid(start, text.indexOf("kB", start) - start).trimmed().toDouble() / 1024;
}

void close(SettingsWorld& world) {
  world.quickView().close();
  world.turn();
}

void measureShowing(SettingsWorld& world) {
  const double before = proportionalMegabytes();
  print("first showing", {costOf([&] { world.show(); })});
  const double open = proportionalMegabytes();
  std::vector<Cost> showings;
  for (int round = 0; round < 10; ++round) {
    close(world);
    showings.push_back(costOf([&] { world.show(); }));
  }
  print("later showing", showings);
  close(world);
  std::printf("%-40s before %.1f  open %.1f  closed %.1f MB\n", "proportional memory", before, open,
              proportionalMegabytes());
  world.show();
}

void measureRescans(SettingsWorld& world) {
  std::vector<Cost> rescans;
  for (int round = 0; round < 20; ++round) {
    auto apps = manyApps(400);
    // Every tenth application comes and goes.
    std::erase_if(apps, [&, index = 0](const NamedApp&) mutable { return index++ % 10 == round % 2; });
    world.memory.showItems(apps);
    rescans.push_back(costOf([&] { world.rescan(); }));
  }
  print("rescan of 400 rows, 80 of them changed", rescans);
}

void measureKeys(SettingsWorld& world) {
  world.press("Ctrl+F");
  std::vector<Cost> keys;
  for (int round = 0; round < 10; ++round) {
    for (const char* key : {"1", "2", "Backspace", "Backspace"}) {
      keys.push_back(costOf([&] { world.press(key); }));
    }
  }
  print("key typed into the search, 400 rows", keys);
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  orvo::SettingsWorld world;
  world.memory.showItems(orvo::manyApps(400));
  world.look.reducesMotion = false;
  world.launch();
  orvo::measureShowing(world);
  orvo::measureRescans(world);
  orvo::measureKeys(world);
  return 0;
}
