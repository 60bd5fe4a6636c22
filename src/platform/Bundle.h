// The main bundle: the folder that the running program belongs to. Constant for the life of the
// process; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

class Bundle {
 public:
  virtual ~Bundle() = default;

  virtual std::optional<std::string> identifier() const = 0;
  // From the bundle's information dictionary; absent for what is no text.
  virtual std::optional<std::string> infoText(std::string_view key) const = 0;

  // The bundle's path as it was launched, without a trailing slash; outside any bundle the folder of
  // the executable.
  virtual std::string path() const = 0;
};

}  // namespace orvo
