#include "app/AppDelegate.h"

#include "model/OrvoModel.h"
#include "platform/StatusBar.h"
#include "platform/UserDefaults.h"
#include "platform/Window.h"
#include "platform/Words.h"
#include "ui/OrvoView.h"

#include <utility>

namespace orvo {

namespace {

constexpr const char* hasOpenedSettingsKey = "Orvo.HasOpenedSettings";
constexpr std::uint32_t noOptionalBehavior = 0;

// An untitled item that carries a titled menu.
MenuItem submenu(std::string title, std::vector<MenuItem> items) {
  return {.submenu = {{.title = std::move(title), .items = std::move(items)}}};
}

MenuItem editMenu() {
  return submenu("Edit", {{"Undo", FirstResponderAction{"undo:"}, "z"},
                          {"Cut", FirstResponderAction{"cut:"}, "x"},
                          {"Copy", FirstResponderAction{"copy:"}, "c"},
                          {"Paste", FirstResponderAction{"paste:"}, "v"},
                          {"Select All", FirstResponderAction{"selectAll:"}, "a"}});
}

WindowDescription settingsWindow() {
  return {.contentSize = {880, 680},
          .styleMask = windowStyleTitled | windowStyleClosable | windowStyleMiniaturizable | windowStyleResizable |
                       windowStyleFullSizeContentView,
          .title = "Orvo Settings",
          .titleVisible = false,
          .titlebarAppearsTransparent = true,
          .frameAutosaveName = "Orvo.Settings",
          .releasedWhenClosed = false,
          .minimumSize = {850, 630}};
}

}  // namespace

std::shared_ptr<AppDelegate> AppDelegate::make(const Platform& platform) {
  return std::shared_ptr<AppDelegate>(new AppDelegate(platform));
}

AppDelegate::AppDelegate(const Platform& platform) : platform_(platform), model_(OrvoModel::make(platform)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  platform_.application.setActivationPolicy(ActivationPolicy::accessory);
  installMainMenu();
  makeStatusItem();
  model_->onStateChanged = weakly(&AppDelegate::updateStatusItem);
  model_->start();
  const bool needsNoWindow = platform_.userDefaults.boolean(hasOpenedSettingsKey) && model_->accessibilityGranted() &&
                             model_->nativeMenuBarReady;
  if (!needsNoWindow) showWindow();
}

bool AppDelegate::applicationShouldHandleReopen(bool) {
  openSettings();
  return true;
}

// The process may end inside this message, so the window goes while its toolkit is still whole.
void AppDelegate::applicationWillTerminate() {
  model_->stop();
  window_.reset();
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed() { return false; }

void AppDelegate::installMainMenu() {
  Menu menu;
  menu.items = {submenu("Orvo", {{"Settings…", weakly(&AppDelegate::openSettings), ","},
                                 {.separator = true},
                                 {"Quit Orvo", weakly(&AppDelegate::quit), "q"}}),
                editMenu()};
  platform_.application.setMainMenu(menu);
}

void AppDelegate::makeStatusItem() {
  statusItem_ = platform_.statusBar.statusItem(squareStatusItemLength);
  if (!statusItem_) return;
  statusItem_->setAutosaveName("Quillet.Toggle");
  statusItem_->setBehavior(noOptionalBehavior);
  statusItem_->setVisible(true);
  if (StatusItemButton* const made = button()) {
    made->setAction(weakly(&AppDelegate::statusClicked), leftMouseUpMask | rightMouseUpMask);
    made->setAccessibilityLabel("Orvo menu bar manager");
    made->setAccessibilityIdentifier("Orvo.NativeMenuBarToggle");
  }
  updateStatusItem();
}

void AppDelegate::updateStatusItem() {
  StatusItemButton* const shown = button();
  if (shown == nullptr) return;
  const bool visible = !model_->isConcealing();
  shown->setImage(visible ? "chevron.right" : "chevron.left", "Orvo");
  shown->setToolTip(visible ? "Hide selected icons · Right-click for settings"
                            : std::string("Show hidden icons · ") + platform_.words.shortcut);
}

StatusItemButton* AppDelegate::button() const { return statusItem_ ? statusItem_->button() : nullptr; }

void AppDelegate::statusClicked() {
  if (platform_.application.currentEventType() == EventType::rightMouseUp) {
    if (StatusItemButton* const clicked = button()) showStatusMenu(*clicked);
  } else if (model_->isConcealing()) {
    model_->reveal(true);
  } else if (model_->canHide()) {
    model_->hideSelected();
  } else {
    showWindow();
  }
}

void AppDelegate::showStatusMenu(StatusItemButton& button) {
  const bool visible = !model_->isConcealing();
  Menu menu;
  menu.autoenablesItems = false;
  menu.items = {{.title = visible ? "Hide selected icons" : "Show all icons",
                 .action = weakly(&AppDelegate::toggle),
                 .enabled = !visible || model_->canHide()},
                {"Settings…", weakly(&AppDelegate::openSettings)},
                {.separator = true},
                {"Quit Orvo", weakly(&AppDelegate::quit)}};
  button.popUpMenu(menu, {0, button.bounds().y});
}

void AppDelegate::toggle() { model_->toggle(); }

void AppDelegate::openSettings() {
  model_->reveal(false);
  showWindow();
}

void AppDelegate::quit() {
  model_->stop();
  platform_.application.terminate();
}

void AppDelegate::showWindow() {
  if (!window_) makeWindow();
  platform_.userDefaults.setBoolean(hasOpenedSettingsKey, true);
  if (window_) window_->makeKeyAndOrderFront();
  platform_.application.activateIgnoringOtherApps();
  model_->refreshLater();
}

void AppDelegate::makeWindow() {
  if (!content_) content_ = std::make_unique<OrvoView>(model_, platform_);
  window_ = platform_.windows.make(settingsWindow(), *content_);
  if (window_) window_->center();
}

std::function<void()> AppDelegate::weakly(void (AppDelegate::*action)()) {
  return [delegate = weak_from_this(), action] {
    if (const auto self = delegate.lock()) (self.get()->*action)();
  };
}

}  // namespace orvo
