// File URL operations of Foundation. Owned by main.cpp; any thread.
#pragma once

#include "platform/FileSystem.h"

namespace orvo {

class FoundationFileSystem final : public FileSystem {
 public:
  std::string homeDirectoryForCurrentUser() const override;
  std::string resolving(const std::string& path) const override;
};

}  // namespace orvo
