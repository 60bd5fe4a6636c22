// The few file URL operations that the install-location check needs. Any thread.
#pragma once

#include <string>

namespace orvo {

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Without a trailing slash.
  virtual std::string homeDirectoryForCurrentUser() const = 0;
  // Follows every symbolic link as far as the path exists; what does not exist is kept as it is. Then absolute, without
  // "." and "..", doubled or trailing slashes.
  virtual std::string resolving(const std::string& path) const = 0;
};

}  // namespace orvo
