#include "platform/macos/foundation/FoundationFileSystem.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

std::string FoundationFileSystem::homeDirectoryForCurrentUser() const {
  @autoreleasepool {
    return textOf([[[NSFileManager defaultManager] homeDirectoryForCurrentUser] path]).value_or("");
  }
}

std::string FoundationFileSystem::resolving(const std::string& path) const {
  @autoreleasepool {
    NSURL* const resolved = [[NSURL fileURLWithPath:nsText(path)] URLByResolvingSymlinksInPath];
    return textOf([[resolved URLByStandardizingPath] path]).value_or(path);
  }
}

}  // namespace orvo
