#include "platform/macos/foundation/FoundationFileSystem.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

std::string FoundationFileSystem::homeDirectoryForCurrentUser() const {
  @autoreleasepool {
    return textOf([[[NSFileManager defaultManager] homeDirectoryForCurrentUser] path]).value_or("");
  }
}

std::string FoundationFileSystem::resolvingSymbolicLinks(const std::string& path) const {
  @autoreleasepool {
    return textOf([[[NSURL fileURLWithPath:nsText(path)] URLByResolvingSymlinksInPath] path]).value_or(path);
  }
}

std::string FoundationFileSystem::standardizing(const std::string& path) const {
  @autoreleasepool {
    return textOf([[[NSURL fileURLWithPath:nsText(path)] URLByStandardizingPath] path]).value_or(path);
  }
}

}  // namespace orvo
