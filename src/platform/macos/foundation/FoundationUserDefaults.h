// The standard user defaults. Owned by main.cpp; main thread only. The system stores what it is given
// by itself and reports no failure.
#pragma once

#include "platform/UserDefaults.h"

namespace orvo {

class FoundationUserDefaults final : public UserDefaults {
 public:
  std::optional<Bytes> data(std::string_view key) const override;
  void setData(std::string_view key, const Bytes& value) override;
  bool boolean(std::string_view key) const override;
  void setBoolean(std::string_view key, bool value) override;
};

}  // namespace orvo
