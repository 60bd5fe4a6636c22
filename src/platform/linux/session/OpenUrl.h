// Opens what Orvo shows outside itself: a bundle, a settings page, a folder, a web page. Main thread. Never waits for
// what it opens, but for a running copy of a bundle, which is given a moment to take the request before a caller about
// to exit goes on.
#pragma once

#include <QDBusConnection>

#include <functional>
#include <string>

namespace orvo {

// `failed`, which may be empty, is called on a later turn when the desktop says that it opened nothing.
void openUrl(const QDBusConnection& bus, const std::string& url, const std::function<void()>& failed);

}  // namespace orvo
