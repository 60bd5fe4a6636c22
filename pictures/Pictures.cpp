// Makes a picture of every page and state of the settings window, light and dark, from the real window
// over the platform in memory: orvo-pictures FOLDER SUFFIX.
#include "platform/linux/LinuxWords.h"
#include "ui/settings/SettingsWorld.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QTest>

#include <cstdio>
#include <map>

namespace orvo {

namespace {

const std::vector<NamedApp> everyday{
    {"org.example.beacon", "Beacon"},       {"org.example.clipboard", "Clipboard Shelf"},
    {"org.example.cloud", "Cloud Drawer"},  {"org.example.focus", "Focus Timer"},
    {"org.example.notes", "Quick Notes"},   {"org.example.sound", "Sound Desk"},
    {"org.example.weather", "Weatherglass"}};

const std::vector<NamedApp> longNames{
    {"org.example.ar", "تطبيق الملاحظات السريعة"},
    {"org.example.he", "לוח גזירים"},
    {"org.example.hy", "Արագ նշումներ"},
    {"org.example.long", "An Application Whose Name Is So Very Long That It Cannot Possibly Fit Beside Its Choice"},
    {"org.example.ja", "クイックメモと予定表"},
    {"org.example.th", "แอปพลิเคชันบันทึกย่อ"},
    {"org.example.mixed", "Mixed عربي and English"},
    {"org.example.dev", "देवनागरी अनुप्रयोग"}};

const std::vector<NamedApp> rightToLeft{{"org.example.ar", "تطبيق الملاحظات السريعة"},
                                        {"org.example.he", "לוח גזירים"},
                                        {"org.example.fa", "یادداشت‌ها"}};

// A stand-in for an application's icon.
Picture drawnIcon(int pid, int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromHsl(pid * 67 % 360, 120, 140));
  painter.drawRoundedRect(QRectF(1, 1, size - 2, size - 2), size * 0.22, size * 0.22);
  painter.setBrush(QColor(255, 255, 255, 210));
  painter.drawEllipse(QPointF(size / 2.0, size / 2.0), size * 0.2, size * 0.2);
  painter.end();
  Picture picture{size, size, {}};
  const auto* pixels = reinterpret_cast<const std::uint32_t*>(image.constBits());
  picture.pixels.assign(pixels, pixels + static_cast<std::ptrdiff_t>(size) * size);
  return picture;
}

void answerIcons(SettingsWorld& world) {
  auto& requests = world.memory.applicationIcons.requests;
  while (!requests.empty()) {
    const auto [pid, size, answer] = requests.back();
    requests.pop_back();
    // One application in seven has none.
    answer(pid % 7 == 0 ? std::nullopt : std::optional(drawnIcon(pid, size)));
  }
}

// The parts of which the states are made, in the order in which they are played.
using Step = std::function<void(SettingsWorld&)>;

void withoutFramework(SettingsWorld& world) { world.memory.framework.loads = false; }
void notInstalled(SettingsWorld& world) { world.memory.bundle.bundlePath = "/home/user/Downloads/Orvo.app"; }
void notTrusted(SettingsWorld& world) { world.memory.accessibility.trusted = false; }
void shortcutTaken(SettingsWorld& world) { world.memory.hotKeys.registerStatus = -9878; }
void opensNothing(SettingsWorld& world) { world.memory.workspace.opensNothing = true; }
void inDejaVu(SettingsWorld&) { QGuiApplication::setFont(QFont(QStringLiteral("DejaVu Sans"))); }
void loginRefused(SettingsWorld& world) { world.memory.loginItem.failure = "Operation not permitted"; }
void delayOf45Seconds(SettingsWorld& world) {
  world.memory.userDefaults.datas["Quillet.Preferences.v1"] = R"({"rules":{},"autoRehideSeconds":45})";
}

void selectTwo(SettingsWorld& world) {
  world.model->setRule(IconRule::hidden, "org.example.cloud");
  world.model->setRule(IconRule::hidden, "org.example.sound");
}
void hide(SettingsWorld& world) { world.model->hideSelected(); }
void confirm(SettingsWorld& world) { world.memory.framework.answer(0); }
void scan(SettingsWorld& world) {
  world.memory.scanExecutor.holds = true;
  world.model->refresh();
}
void say(SettingsWorld& world) {
  world.model->hideSelected();
  world.memory.workspace.notificationCenter().post(Notification::applicationLaunched);
}
void hideElsewhere(SettingsWorld& world) { world.memory.workspace.tellOthers({"Quick Notes"}); }
void manageElsewhere(SettingsWorld& world) { world.memory.workspace.tellOthers({}, true); }
void withoutControls(SettingsWorld& world) {
  std::vector<std::shared_ptr<MemoryElement>> items;
  for (const RunningApplication& each : world.memory.workspace.running)
    if (each.processIdentifier >= 2000) items.push_back(element(each.processIdentifier));
  world.memory.accessibility.trees[MemoryPlatform::hostPid] = element(MemoryPlatform::hostPid)->withChildren(items);
}
Step search(const char* text) {
  return [=](SettingsWorld& world) { world.model->searchText = std::string(text); };
}
Step pressKeys(const char* keys) {
  return [=](SettingsWorld& world) { world.press(keys); };
}
void perform(SettingsWorld& world, const char* action, int argument = 0) { world.view->perform(action, argument); }
// Qt takes the first place of a pointer for where it has always been.
void pointAt(SettingsWorld& world, const QString& name, QPoint within) {
  QTest::mouseMove(&world.quickView(), {1, 1});
  QTest::mouseMove(&world.quickView(), world.item(name)->mapToScene(within).toPoint());
}
Step point(const QString& name, QPoint within = {10, 10}) {
  return [=](SettingsWorld& world) { pointAt(world, name, within); };
}
Step press(const QString& name, QPoint within = {10, 10}) {
  return [=](SettingsWorld& world) {
    pointAt(world, name, within);
    QTest::mousePress(&world.quickView(), Qt::LeftButton, {}, world.item(name)->mapToScene(within).toPoint());
  };
}
// Until a tool tip has come.
void rest(SettingsWorld&) { QTest::qWait(1000); }
void openBehavior(SettingsWorld& world) { world.view->page = OrvoView::Page::behavior; }
void openDelays(SettingsWorld& world) { world.click(world.item("rehidePicker")); }
void openAtLogin(SettingsWorld& world) { world.model->setLoginItem(true); }
void openAbout(SettingsWorld& world) { world.view->page = OrvoView::Page::about; }
void copy(SettingsWorld& world) { perform(world, "copyDiagnostics"); }
void setUp(SettingsWorld& world) { perform(world, "setup"); }
void takeOver(SettingsWorld& world) { perform(world, "takeOver"); }
void refuseTakeOver(SettingsWorld& world) {
  world.memory.workspace.takenOver("The program that manages the tray does not answer.");
}
void openLink(SettingsWorld& world) { perform(world, "openLink", 1); }

constexpr QSize usual(880, 680);
constexpr QSize smallest(850, 630);
// 1280 by 800 pixels at 144 dots per inch.
constexpr QSize magnified(853, 533);
constexpr QSize wide(1600, 900);
const QString clipboard(QStringLiteral("Visibility for Clipboard Shelf"));
const QString refresh(QStringLiteral("Refresh menu bar icons"));
const QString hideSelected(QStringLiteral("Hide selected icons"));

struct State {
  const char* name;
  std::vector<Step> before = {};
  std::vector<Step> after = {};
  std::vector<NamedApp> apps = everyday;
  QSize size = usual;
};

const std::vector<State>& states() {
  static const std::vector<State> all{
      {"framework-missing", {withoutFramework}},
      {"framework-missing-no-permission", {withoutFramework, notTrusted}, {}, {}},
      {"taking-over", {withoutFramework}, {takeOver}},
      {"not-taken-over", {withoutFramework}, {takeOver, refuseTakeOver}},
      {"managed-elsewhere", {}, {selectTwo, manageElsewhere}},
      {"no-controls", {withoutControls}, {selectTwo}},
      {"not-installed-permitted", {notInstalled}},
      {"not-installed-small", {notInstalled, notTrusted}, {}, everyday, {640, 400}},
      {"not-installed", {notInstalled, notTrusted}},
      {"no-permission", {notTrusted}},
      {"ready", {}, {selectTwo}},
      {"ready-minimum", {}, {selectTwo}, everyday, smallest},
      {"scanning", {}, {scan}, {}},
      {"scanning-again", {}, {scan}},
      {"no-hits", {}, {search("nothing like it")}},
      {"search", {}, {search("cl")}},
      {"nothing-found", {}, {}, {}},
      {"one-app", {}, {}, {everyday.front()}},
      {"applying", {}, {selectTwo, hide}},
      {"hidden", {}, {selectTwo, hide, confirm}},
      {"hidden-by-others", {}, {selectTwo, hideElsewhere}},
      {"message", {}, {selectTwo, say}},
      {"shortcut-taken", {shortcutTaken}},
      {"many", {}, {}, manyApps(400)},
      {"long-names", {}, {}, longNames},
      {"right-to-left", {}, {search("ا"), say}, rightToLeft},
      {"dejavu", {inDejaVu}, {selectTwo, say}},
      {"dejavu-not-installed", {inDejaVu, notInstalled, notTrusted}},
      {"keyboard", {}, {pressKeys("Tab Tab Down")}},
      {"keyboard-page", {}, {pressKeys("Shift+Backtab")}},
      {"keyboard-button", {}, {selectTwo, pressKeys("Tab Tab Tab")}},
      {"pointer-page", {}, {point("Behavior")}},
      {"pointer", {}, {point(clipboard, {100, 13})}},
      {"pointer-row", {}, {point("Clipboard Shelf", {200, 20})}},
      {"pointer-button", {}, {selectTwo, point(hideSelected)}},
      {"pressed", {}, {press(clipboard, {100, 13})}},
      {"pressed-row", {}, {press("Clipboard Shelf", {200, 20})}},
      {"pressed-button", {}, {selectTwo, press(hideSelected)}},
      {"pressed-refresh", {}, {press(refresh)}},
      {"pressed-page", {}, {press("Behavior")}},
      {"tool-tip", {}, {point(refresh), rest}},
      {"tool-tip-button", {}, {selectTwo, hide, confirm, point("Reveal hidden icons"), rest}},
      {"not-opened", {notInstalled, notTrusted, opensNothing}, {setUp}},
      {"wide", {}, {selectTwo, say}, everyday, wide},
      {"magnified", {}, {selectTwo, say}, everyday, magnified},
      {"magnified-not-installed", {notInstalled, notTrusted}, {}, everyday, magnified},
      {"small", {}, {selectTwo, say}, everyday, {640, 400}},
      {"behavior", {}, {openBehavior}},
      {"behavior-at-login", {}, {openBehavior, openAtLogin, pressKeys("Tab")}},
      {"behavior-magnified", {}, {openBehavior}, everyday, magnified},
      {"behavior-45-seconds", {delayOf45Seconds}, {openBehavior, openDelays}},
      {"settings-not-opened", {notTrusted, opensNothing}, {setUp}},
      {"behavior-shortcut-taken", {shortcutTaken}, {openBehavior}},
      {"behavior-message", {loginRefused, delayOf45Seconds}, {openBehavior, openAtLogin}},
      {"behavior-menu", {}, {openBehavior, openDelays}, everyday, smallest},
      {"about", {}, {openAbout}},
      {"about-nothing-ready",
       {withoutFramework, notInstalled, notTrusted, shortcutTaken},
       {openAbout},
       everyday,
       smallest},
      {"about-keyboard", {}, {openAbout, pressKeys("Tab Tab")}},
      {"about-pointer", {}, {openAbout, point("Linux compatibility research", {20, 6})}},
      {"about-copied", {}, {openAbout, copy}},
      {"about-not-opened", {opensNothing}, {openAbout, openLink}},
      {"about-magnified", {}, {openAbout}, everyday, magnified},
      {"about-wide", {}, {openAbout}, everyday, wide},
      {"about-dejavu", {inDejaVu}, {openAbout}, everyday, smallest},
      {"behavior-dejavu", {inDejaVu}, {openBehavior}, everyday, smallest},
      {"behavior-pressed", {}, {openBehavior, press("Automatically hide again")}},
  };
  return all;
}

QImage picture(const State& state, bool dark) {
  static const QFont usualFont = QGuiApplication::font();
  QGuiApplication::setFont(usualFont);
  SettingsWorld world;
  world.memory.words = linuxWords;
  world.memory.bundle.systemVersion = "Debian GNU/Linux 12 (bookworm)";
  world.memory.showItems(state.apps);
  for (const Step& step : state.before) step(world);
  world.look.dark = dark;
  world.show();
  world.quickView().setMinimumSize({1, 1});
  world.quickView().resize(state.size);
  world.turn();
  for (const Step& step : state.after) {
    step(world);
    world.turn();
  }
  answerIcons(world);
  world.turn();
  QImage shown = world.quickView().grabWindow();
  QTest::mouseRelease(&world.quickView(), Qt::LeftButton, {}, {1, 1});
  return shown;
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  if (arguments.size() < 3) {
    std::fputs("orvo-pictures FOLDER SUFFIX [STATE...]\n", stderr);
    return 2;
  }
  const QDir folder(arguments[1]);
  for (const auto& state : orvo::states()) {
    if (arguments.size() > 3 && !arguments.mid(3).contains(QLatin1String(state.name))) continue;
    for (const bool dark : {false, true}) {
      const QString name = QStringLiteral("%1-%2%3.png").arg(state.name, dark ? "dark" : "light", arguments[2]);
      if (!orvo::picture(state, dark).save(folder.filePath(name))) return 1;
    }
  }
  return 0;
}
