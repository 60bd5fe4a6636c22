// A bundle that stands where it should: in the Applications folder, with an identifier.
#pragma once

#include "platform/Bundle.h"

#include <map>

namespace orvo {

class MemoryBundle : public Bundle {
 public:
  std::optional<std::string> bundleIdentifier = "local.orvo.Orvo";
  std::map<std::string, InfoValue, std::less<>> info{{"CFBundleShortVersionString", std::string("0.2.0")}};
  std::string bundlePath = "/Applications/Orvo.app";

  std::optional<std::string> identifier() const override { return bundleIdentifier; }
  std::optional<InfoValue> infoValue(std::string_view key) const override {
    const auto found = info.find(key);
    return found == info.end() ? std::nullopt : std::optional(found->second);
  }
  std::string path() const override { return bundlePath; }
};

}  // namespace orvo
