// The stored defaults as one JSON file. Owned by main.cpp; main thread only. Each change replaces the
// file whole. A file that cannot be read is moved aside under a name that says so, never overwritten;
// a change that cannot be stored counts in this process, and the next one tries again with all of them.
#pragma once

#include "platform/UserDefaults.h"

#include <nlohmann/json.hpp>

namespace orvo {

class FileUserDefaults final : public UserDefaults {
 public:
  // Nothing is read, written or made before the first use.
  explicit FileUserDefaults(std::string path);

  std::optional<Bytes> data(std::string_view key) const override;
  void setData(std::string_view key, const Bytes& value) override;
  bool boolean(std::string_view key) const override;
  void setBoolean(std::string_view key, bool value) override;

  // Below XDG_CONFIG_HOME, or ~/.config where that is unset or not absolute.
  static std::string standardPath();

 private:
  const nlohmann::json& values() const;
  void load() const;
  bool moveAside(const std::string& reason) const;
  void set(std::string_view key, nlohmann::json value);

  const std::string path_;
  mutable bool loaded_ = false;
  mutable bool mayReplace_ = true;  // false while an unreadable file could not be moved aside
  mutable nlohmann::json values_ = nlohmann::json::object();
};

}  // namespace orvo
