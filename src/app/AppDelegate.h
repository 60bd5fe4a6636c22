// The application's delegate: makes the model and owns the status item, the menus and the settings
// window. Owned by OrvoMain; main thread only. Made by `make`, since menus and buttons hold it weakly.
#pragma once

#include "platform/Application.h"
#include "platform/Menu.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>

namespace orvo {

class OrvoModel;
class StatusItem;
class StatusItemButton;
class Window;
class WindowContent;

class AppDelegate : public ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
 public:
  static std::shared_ptr<AppDelegate> make(const Platform& platform);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;
  ~AppDelegate() override;

  void applicationDidFinishLaunching() override;
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
  void applicationWillTerminate() override;
  bool applicationShouldTerminateAfterLastWindowClosed() override;

  OrvoModel& model() { return *model_; }

 private:
  explicit AppDelegate(const Platform& platform);

  void statusClicked();
  void toggle();
  void openSettings();
  void quit();

  void installMainMenu();
  void makeStatusItem();
  void updateStatusItem();
  StatusItemButton* button() const;
  void showStatusMenu(StatusItemButton& button);
  void showWindow();
  void makeWindow();
  std::function<void()> weakly(void (AppDelegate::*action)());

  Platform platform_;
  std::shared_ptr<OrvoModel> model_;
  // Made when the window is first shown, then kept; the window must go first.
  std::unique_ptr<WindowContent> content_;
  std::unique_ptr<Window> window_;
  std::unique_ptr<StatusItem> statusItem_;
};

}  // namespace orvo
