// Prints what the settings window costs: the first showing, a later one, a rescan and a typed key with
// 400 rows, each up to the painted frame. Figures of a Debug build mean nothing.
#include "ui/settings/SettingsWorld.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace orvo {

namespace {

template <typename Action>
double milliseconds(Action&& action) {
  QElapsedTimer timer;
  timer.start();
  action();
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// Proportional share of shared pages included.
double proportionalMegabytes() {
  QFile file(QStringLiteral("/proc/self/smaps_rollup"));
  if (!file.open(QIODevice::ReadOnly)) return 0;
  for (const QByteArray& line : file.readAll().split('\n')) {
    if (line.startsWith("Pss:")) return line.mid(4).trimmed().split(' ').front().toDouble() / 1024;
  }
  return 0;
}

void print(const char* what, std::vector<double> figures, const char* unit = "ms") {
  std::ranges::sort(figures);
  std::printf("%-44s median %7.2f  worst %7.2f %s\n", what, figures[figures.size() / 2], figures.back(), unit);
}

void measureShowing(SettingsWorld& world) {
  const double before = proportionalMegabytes();
  print("first showing", {milliseconds([&] { world.show(); })});
  const double open = proportionalMegabytes();
  std::vector<double> showings;
  for (int round = 0; round < 10; ++round) {
    world.quickView().close();
    world.turn();
    showings.push_back(milliseconds([&] { world.show(); }));
  }
  print("later showing", showings);
  world.quickView().close();
  world.turn();
  std::printf("%-44s before %.1f  open %.1f  closed %.1f MB\n", "proportional memory", before, open,
              proportionalMegabytes());
  world.show();
}

void measureRescans(SettingsWorld& world) {
  std::vector<double> rescans;
  for (int round = 0; round < 20; ++round) {
    auto apps = manyApps(400);
    // Every tenth application comes and goes.
    std::erase_if(apps, [&, index = 0](const NamedApp&) mutable { return index++ % 10 == round % 2; });
    world.setApps(apps);
    rescans.push_back(milliseconds([&] { world.rescan(); }));
  }
  print("rescan of 400 rows, 80 of them changed", rescans);
}

void measureKeys(SettingsWorld& world) {
  world.key(Qt::Key_F, Qt::ControlModifier);
  std::vector<double> keys;
  for (int round = 0; round < 10; ++round) {
    for (const int key : {Qt::Key_1, Qt::Key_2, Qt::Key_Backspace, Qt::Key_Backspace}) {
      keys.push_back(milliseconds([&] { world.key(key); }));
    }
  }
  print("key typed into the search, 400 rows", keys);
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  orvo::SettingsWorld world;
  world.setApps(orvo::manyApps(400));
  world.start();
  orvo::measureShowing(world);
  orvo::measureRescans(world);
  orvo::measureKeys(world);
  return 0;
}
