// The few file URL operations that the install-location check needs. Any thread.
#pragma once

#include <string>

namespace orvo {

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Without a trailing slash.
  virtual std::string homeDirectoryForCurrentUser() const = 0;
  // Follows every symbolic link as far as the path exists; what does not exist is kept as it is.
  virtual std::string resolvingSymbolicLinks(const std::string& path) const = 0;
  // Absolute, without "." and "..", doubled or trailing slashes; purely textual.
  virtual std::string standardizing(const std::string& path) const = 0;
};

}  // namespace orvo
