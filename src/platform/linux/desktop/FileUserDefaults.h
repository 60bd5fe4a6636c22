// The stored defaults as one JSON file. Owned by main.cpp; main thread only. Each change replaces the
// file whole, with what other copies of Orvo have written there since. A file that cannot be read is moved
// aside under a name that says so, never overwritten; a change that cannot be stored counts in this process,
// and the next one tries again with all of them.
#pragma once

#include "platform/UserDefaults.h"

#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <ctime>
#include <tuple>

namespace orvo {

class FileUserDefaults final : public UserDefaults {
 public:
  // Nothing is read, written or made before the first use.
  explicit FileUserDefaults(std::string path);

  std::optional<Bytes> data(std::string_view key) const override;
  void setData(std::string_view key, const Bytes& value) override;
  bool boolean(std::string_view key) const override;
  void setBoolean(std::string_view key, bool value) override;
  // Told on standard error as well, once until something can be stored again.
  std::optional<std::string> storageFailure() const override { return failure_; }

  // What tells one state of the file from another: device, number, size and time of change.
  using Stamp = std::tuple<dev_t, ino_t, off_t, time_t, long>;

  // Below XDG_CONFIG_HOME, or ~/.config where that is unset or not absolute.
  static std::string standardPath();

 private:
  const nlohmann::json& values() const;
  void load() const;
  // Both absent on success, else the reason.
  std::optional<std::string> moveAside(const std::string& reason) const;
  std::optional<std::string> store();
  void set(std::string_view key, const nlohmann::json& value);

  const std::string path_;
  mutable std::optional<Stamp> stamp_;             // of what was read last
  mutable std::optional<std::string> unreadable_;  // why the file that is there cannot be read
  mutable nlohmann::json values_ = nlohmann::json::object();
  nlohmann::json unsaved_ = nlohmann::json::object();  // those of the values that could not be stored
  std::optional<std::string> failure_;
};

}  // namespace orvo
