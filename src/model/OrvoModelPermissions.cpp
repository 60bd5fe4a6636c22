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
  const std::string path = fileSystem.standardizing(fileSystem.resolvingSymbolicLinks(bundle.path()));
  return path.starts_with("/Applications/") ||
         path.starts_with(fileSystem.homeDirectoryForCurrentUser() + "/Applications/");
}

void OrvoModel::requestAccessibility() {
  accessibilityGranted = accessibility_.isProcessTrusted(true);
  workspace_.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility",
                     weakly(&OrvoModel::settingsNotOpened));
}

void OrvoModel::settingsNotOpened() {
  if (words_.couldNotOpen != nullptr) message = std::string(words_.couldNotOpen) + words_.accessibilityPage + '.';
}

void OrvoModel::setLoginItem(bool enabled) {
  if (const auto failure = enabled ? loginItem_.registerItem() : loginItem_.unregisterItem()) {
    message = "Login item could not be changed: " + *failure;
    return;
  }
  launchAtLogin = isLoginItemEnabled();
  if (enabled && loginItem_.status() == LoginItemStatus::requiresApproval) {
    message = words_.allowLoginItem;
    loginItem_.openSystemSettingsLoginItems();
  }
}

bool OrvoModel::isLoginItemEnabled() const { return loginItem_.status() == LoginItemStatus::enabled; }

}  // namespace orvo
