// The main application's login item. Main thread; synchronous.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvo {

// The numbers are the platform service's own; others may be answered too.
enum class LoginItemStatus : std::int32_t { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

class LoginItem {
 public:
  virtual ~LoginItem() = default;

  // Registers it or ends that. Absent on success, else the error's localized description.
  virtual std::optional<std::string> setRegistered(bool registered) = 0;
  virtual LoginItemStatus status() const = 0;
  virtual void openSystemSettingsLoginItems() = 0;
};

}  // namespace orvo
