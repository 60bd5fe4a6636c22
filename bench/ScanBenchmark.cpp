// A whole scan: the real agent with 400 elements, a panel that is asked for three of them, and one call over a
// real bus. The walk over the answer is the scanner's own.
#include "Running.h"

#include "core/Rect.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/session/AgentTree.h"
#include "sensing/MenuBarWalk.h"

#include <QCoreApplication>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <string>

namespace orvo {
namespace {

constexpr int programs = 18;
constexpr int itemsOfEach = 22;  // in all, with the root, the panel and its two controls beside the tray, 400 elements
constexpr int patience = 10000;  // milliseconds

// A bus of our own with the programs that a scan meets; they end with the object.
class Desktop {
 public:
  Desktop() {
    qputenv("DBUS_SESSION_BUS_ADDRESS", start(daemon_, "dbus-daemon", {"--session", "--nofork", "--print-address"}));
    start(panel_, "/usr/bin/python3", {ORVO_PANEL_PROGRAM});
    for (const char* plugin : {"put 1 systray 0 40", "put 2 clock 40 40", "put 3 pulseaudio 80 40"}) tell(plugin);
    agent_.setProcessChannelMode(QProcess::MergedChannels);
    start(agent_, ORVO_AGENT, {});
    for (auto& program : items_) start(program, "/usr/bin/python3", {ORVO_ITEMS_PROGRAM, QString::number(itemsOfEach)});
  }
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  ~Desktop() {
    for (QProcess& program : items_) end(program);
    for (QProcess* program : {&agent_, &panel_, &daemon_}) end(*program);
  }

  std::int32_t host() const { return static_cast<std::int32_t>(agent_.processId()); }

 private:
  static QByteArray start(QProcess& process, const QString& program, const QStringList& arguments) {
    process.start(program, arguments);
    while (!process.canReadLine() && process.waitForReadyRead(patience)) continue;
    return process.readLine().trimmed();
  }
  void tell(const char* command) {
    panel_.write(QByteArray(command) + '\n');
    while (!panel_.canReadLine() && panel_.waitForReadyRead(patience)) continue;
    panel_.readLine();
  }
  static void end(QProcess& program) {
    program.kill();
    program.waitForFinished();
  }

  QProcess daemon_;
  QProcess panel_;
  QProcess agent_;
  std::array<QProcess, programs> items_;
};

void scanOfFourHundredElements(benchmark::State& state) {
  int count = 1;
  std::string name = "orvo_bench";
  char* arguments[] = {name.data(), nullptr};
  const QCoreApplication application(count, arguments);
  const Desktop desktop;
  const Running workspace;
  const auto agent = std::make_shared<AgentConnection>();
  std::size_t elements = 0;
  std::size_t controls = 0;
  std::chrono::duration<double, std::milli> greatest{};
  while (state.KeepRunning()) {
    const auto since = std::chrono::steady_clock::now();
    const auto tree = std::make_shared<AgentTree>(agent, desktop.host());
    MenuBarWalk walk(workspace, desktop.host());
    walk.walk(*rootElement(tree), 0, std::nullopt);
    elements = tree->elements().size();
    controls = walk.systemFrames().size();
    greatest = std::max<decltype(greatest)>(greatest, std::chrono::steady_clock::now() - since);
  }
  state.counters["greatest_ms"] = greatest.count();
  if (elements != 4 + programs * itemsOfEach || controls != 2)
    state.SkipWithError("the tree is not the one to be measured");
}
BENCHMARK(scanOfFourHundredElements)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(200);

}  // namespace
}  // namespace orvo
