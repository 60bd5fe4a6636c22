// The application's stored defaults. Main thread only. Reading never fails: what is absent, of
// another kind or unreadable counts as absent. Other processes of the person's may write too: reading
// tells what is stored now. A value that cannot be stored counts for this process alone.
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

  // The system's own words on why the last write could not be stored; absent when it was. A system whose
  // writes cannot fail has nothing to say.
  virtual std::optional<std::string> storageFailure() const { return std::nullopt; }

  // An absent key reads as false.
  virtual bool boolean(std::string_view key) const = 0;
  virtual void setBoolean(std::string_view key, bool value) = 0;
};

}  // namespace orvo
