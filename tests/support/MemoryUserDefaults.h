// Stored defaults that live as long as the object.
#pragma once

#include "platform/UserDefaults.h"

#include <map>

namespace orvo {

class MemoryUserDefaults : public UserDefaults {
 public:
  std::map<std::string, Bytes, std::less<>> datas;
  std::map<std::string, bool, std::less<>> booleans;

  std::optional<Bytes> data(std::string_view key) const override {
    const auto found = datas.find(key);
    return found == datas.end() ? std::nullopt : std::optional(found->second);
  }
  void setData(std::string_view key, const Bytes& value) override { datas[std::string(key)] = value; }
  bool boolean(std::string_view key) const override {
    const auto found = booleans.find(key);
    return found != booleans.end() && found->second;
  }
  void setBoolean(std::string_view key, bool value) override { booleans[std::string(key)] = value; }
};

}  // namespace orvo
