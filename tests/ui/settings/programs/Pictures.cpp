// Makes a picture of every page and state of the settings window, light and dark, from the real window
// over the platform in memory: orvo-pictures FOLDER SUFFIX.
#include "ui/settings/SettingsWorld.h"

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QPainter>

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
    {"org.example.th", "แอปพลิเคชันบันทึกย่อ"},
    {"org.example.mixed", "Mixed عربي and English"},
    {"org.example.dev", "देवनागरी अनुप्रयोग"}};

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
    const auto request = requests.back();
    requests.pop_back();
    // One application in seven has none.
    const bool none = request.processIdentifier % 7 == 0;
    request.answer(none ? std::nullopt : std::optional(drawnIcon(request.processIdentifier, request.size)));
  }
}

void hideTwo(SettingsWorld& world) {
  world.model->setRule(IconRule::hidden, "org.example.cloud");
  world.model->setRule(IconRule::hidden, "org.example.sound");
}

struct State {
  const char* name;
  std::vector<NamedApp> apps = everyday;
  std::function<void(SettingsWorld&)> before = [](SettingsWorld&) {};
  std::function<void(SettingsWorld&)> after = [](SettingsWorld&) {};
  QSize size = {880, 680};
};

void openBehavior(SettingsWorld& world) { world.view->page = OrvoView::Page::behavior; }
void openAbout(SettingsWorld& world) { world.view->page = OrvoView::Page::about; }

const std::vector<State>& states() {
  static const std::vector<State> all{
      {.name = "framework-missing", .before = [](auto& world) { world.memory.framework.loads = false; }},
      {.name = "not-installed",
       .before =
           [](auto& world) {
             world.memory.bundle.bundlePath = "/home/user/Downloads/Orvo.app";
             world.memory.accessibility.trusted = false;
           }},
      {.name = "no-permission", .before = [](auto& world) { world.memory.accessibility.trusted = false; }},
      {.name = "ready", .after = hideTwo},
      {.name = "ready-minimum", .after = hideTwo, .size = {850, 630}},
      {.name = "scanning", .apps = {}, .after = [](auto& world) { world.model->isScanning = true; }},
      {.name = "no-hits", .after = [](auto& world) { world.model->searchText = "nothing like it"; }},
      {.name = "search", .after = [](auto& world) { world.model->searchText = "o"; }},
      {.name = "nothing-found", .apps = {}},
      {.name = "one-app", .apps = {everyday.front()}},
      {.name = "applying",
       .after =
           [](auto& world) {
             hideTwo(world);
             world.model->hideSelected();
           }},
      {.name = "hidden",
       .after =
           [](auto& world) {
             hideTwo(world);
             world.model->hideSelected();
             world.memory.framework.answer(0);
           }},
      {.name = "message",
       .after =
           [](auto& world) {
             hideTwo(world);
             world.model->message = "A new app opened. Icons are shown so its menu bar item can load.";
           }},
      {.name = "shortcut-taken", .before = [](auto& world) { world.memory.hotKeys.registerStatus = -9878; }},
      {.name = "many", .apps = manyApps(400)},
      {.name = "long-names", .apps = longNames},
      {.name = "keyboard",
       .after =
           [](auto& world) {
             world.turn();
             for (int press = 0; press < 5; ++press) world.key(Qt::Key_Tab);
             world.key(Qt::Key_Down);
           }},
      {.name = "behavior", .after = openBehavior},
      {.name = "behavior-shortcut-taken",
       .before = [](auto& world) { world.memory.hotKeys.registerStatus = -9878; },
       .after = openBehavior},
      {.name = "behavior-message",
       .before =
           [](auto& world) {
             world.memory.loginItem.failure = "Operation not permitted";
             world.memory.userDefaults.datas["Quillet.Preferences.v1"] = R"({"rules":{},"autoRehideSeconds":45})";
           },
       .after =
           [](auto& world) {
             openBehavior(world);
             world.model->setLoginItem(true);
           }},
      {.name = "behavior-menu",
       .after =
           [](auto& world) {
             openBehavior(world);
             world.turn();
             world.click(world.control("rehidePicker"));
           },
       .size = {850, 630}},
      {.name = "about", .after = openAbout},
      {.name = "about-nothing-ready",
       .before =
           [](auto& world) {
             world.memory.framework.loads = false;
             world.memory.bundle.bundlePath = "/home/user/Downloads/Orvo.app";
             world.memory.accessibility.trusted = false;
             world.memory.hotKeys.registerStatus = -9878;
           },
       .after = openAbout,
       .size = {850, 630}},
      {.name = "about-copied",
       .after =
           [](auto& world) {
             openAbout(world);
             world.view->copyDiagnostics();
           }},
  };
  return all;
}

QImage picture(const State& state, bool dark) {
  SettingsWorld world;
  world.setApps(state.apps);
  state.before(world);
  world.start();
  world.appearance->current = {.dark = dark, .reducesMotion = true};
  world.show();
  world.quickView().resize(state.size);
  world.turn();
  state.after(world);
  world.turn();
  answerIcons(world);
  world.turn();
  return world.quickView().grabWindow();
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
