// Opens what Orvo shows outside itself: a bundle, a settings page, a folder, a web page. Owned by
// DesktopWorkspace; main thread. Never waits for what it opens, but for a running copy of a bundle,
// which is given a moment to take the request before a caller about to exit goes on.
#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>
#include <string>
#include <utility>

namespace orvo {

class UrlOpener {
 public:
  explicit UrlOpener(QDBusConnection bus) : bus_(std::move(bus)) {}

  // `failed`, which may be empty, is called on a later turn when the desktop says that it opened nothing.
  void open(const std::string& url, const std::function<void()>& failed) const;

 private:
  void openBundle(const QString& root, const QString& identifier) const;

  QDBusConnection bus_;
};

}  // namespace orvo
