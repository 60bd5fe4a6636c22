// The login item as an XDG autostart entry of the person's own. Owned by main.cpp; main thread. An
// entry that the person switched off in the session's settings stays off until they allow it there.
#pragma once

#include "platform/LoginItem.h"

#include <string>
#include <vector>

namespace orvo {

class AutostartLoginItem final : public LoginItem {
 public:
  // `folder` holds the autostart entries; `program` is the absolute path to start at login.
  AutostartLoginItem(const std::string& folder, const std::string& identifier, const std::string& program);

  std::optional<std::string> setRegistered(bool registered) override;
  // Not found for an entry that starts another program, such as a copy that was moved.
  LoginItemStatus status() const override;
  void openSystemSettingsLoginItems() override;

  // Below XDG_CONFIG_HOME, or ~/.config where that is unset or not absolute.
  static std::string standardFolder();

 private:
  const std::string file_;
  const std::vector<std::string> programs_;  // without links, and as Orvo was started
};

}  // namespace orvo
