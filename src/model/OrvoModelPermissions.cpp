// The permission, the login item and the install location.
#include "model/OrvoModel.h"

#include "platform/Accessibility.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/LoginItem.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

namespace orvo {

bool OrvoModel::isInApplicationsFolder(const Bundle& bundle, const FileSystem& fileSystem) {
  const std::string path = fileSystem.resolving(bundle.path());
  return path.starts_with("/Applications/") ||
         path.starts_with(fileSystem.homeDirectoryForCurrentUser() + "/Applications/");
}

void OrvoModel::requestAccessibility() {
  accessibilityGranted = platform_.accessibility.isProcessTrusted(true);
  platform_.workspace.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility",
                              weakly(&OrvoModel::settingsNotOpened));
}

void OrvoModel::settingsNotOpened() {
  if (platform_.words.couldNotOpen != nullptr)
    message = std::string(platform_.words.couldNotOpen) + platform_.words.accessibilityPage + '.';
}

void OrvoModel::setLoginItem(bool enabled) {
  if (const auto failure = platform_.loginItem.setRegistered(enabled)) {
    message = "Login item could not be changed: " + *failure;
    return;
  }
  launchAtLogin = isLoginItemEnabled();
  if (enabled && platform_.loginItem.status() == LoginItemStatus::requiresApproval) {
    message = platform_.words.allowLoginItem;
    platform_.loginItem.openSystemSettingsLoginItems();
  }
}

bool OrvoModel::isLoginItemEnabled() const { return platform_.loginItem.status() == LoginItemStatus::enabled; }

}  // namespace orvo
