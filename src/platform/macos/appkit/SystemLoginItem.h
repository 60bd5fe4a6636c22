// The main application's login item in ServiceManagement. Owned by main.cpp; main thread only.
#pragma once

#include "platform/LoginItem.h"

namespace orvo {

class SystemLoginItem final : public LoginItem {
 public:
  std::optional<std::string> setRegistered(bool registered) override;
  LoginItemStatus status() const override;
  void openSystemSettingsLoginItems() override;
};

}  // namespace orvo
