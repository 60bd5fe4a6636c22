// A login item whose status and failures tests set.
#pragma once

#include "platform/LoginItem.h"

namespace orvo {

class MemoryLoginItem : public LoginItem {
 public:
  LoginItemStatus current = LoginItemStatus::notRegistered;
  // What a change that succeeds leads to.
  LoginItemStatus afterRegistering = LoginItemStatus::enabled;
  LoginItemStatus afterUnregistering = LoginItemStatus::notRegistered;
  std::optional<std::string> failure;
  int settingsOpened = 0;

  std::optional<std::string> registerItem() override { return change(afterRegistering); }
  std::optional<std::string> unregisterItem() override { return change(afterUnregistering); }
  LoginItemStatus status() const override { return current; }
  void openSystemSettingsLoginItems() override { ++settingsOpened; }

 private:
  std::optional<std::string> change(LoginItemStatus status) {
    if (!failure) current = status;
    return failure;
  }
};

}  // namespace orvo
