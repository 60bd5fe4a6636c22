// The settings window: hosts the QML content over OrvoView, follows the desktop's appearance and
// remembers its frame, never pixel by pixel. Owned by AppDelegate; main thread only. Nothing of Qt Quick
// exists before the first showing, and closing gives the scene back: page and search live in OrvoView.
#pragma once

#include "platform/Appearance.h"
#include "platform/MainQueue.h"
#include "platform/Platform.h"
#include "platform/Window.h"
#include "ui/OrvoView.h"
#include "ui/settings/WindowFrame.h"

#include <QObject>

#include <memory>
#include <optional>
#include <string>

class QQuickView;

namespace orvo {

class DesktopLook;
class IconStore;
class KeyboardNavigation;
class ViewBinding;

class SettingsWindow : public QObject, public Window {
 public:
  // `view` and the services outlive the window.
  SettingsWindow(WindowDescription description, OrvoView& view, const Platform& platform,
                 std::unique_ptr<Appearance> appearance);
  ~SettingsWindow() override;

  void center() override;
  void makeKeyAndOrderFront() override;

  // Absent while closed.
  QQuickView* quickView() const { return quickView_.get(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void open();
  void dress();
  void boundMinimum();
  void applyFrame();
  void dropScene();
  void rememberFrameSoon();
  void rememberFrame();
  std::string frameKey() const;

  const WindowDescription description_;
  OrvoView& view_;
  const Platform platform_;
  std::unique_ptr<Appearance> appearance_;
  std::unique_ptr<DesktopLook> look_;
  std::unique_ptr<IconStore> icons_;
  std::unique_ptr<ViewBinding> binding_;
  std::unique_ptr<KeyboardNavigation> keyboard_;
  std::unique_ptr<QQuickView> quickView_;
  std::optional<WindowFrame> frame_;
  bool centered_ = false;
  MainQueue::Handle rememberHandle_ = MainQueue::Handle::none;
};

}  // namespace orvo
