// The application's stored defaults. Main thread only. Reading never fails: what is absent, of
// another kind or unreadable counts as absent. A write that cannot be stored is reported by the
// adapter on standard error; the value then still counts for this process.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

using Bytes = std::string;

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  virtual std::optional<Bytes> data(std::string_view key) const = 0;
  virtual void setData(std::string_view key, const Bytes& value) = 0;

  // An absent key reads as false.
  virtual bool boolean(std::string_view key) const = 0;
  virtual void setBoolean(std::string_view key, bool value) = 0;
};

}  // namespace orvo
