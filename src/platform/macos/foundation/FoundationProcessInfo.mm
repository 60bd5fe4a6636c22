#include "platform/macos/foundation/FoundationProcessInfo.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

std::vector<std::string> FoundationProcessInfo::arguments() const {
  @autoreleasepool {
    std::vector<std::string> found;
    for (NSString* argument in [[NSProcessInfo processInfo] arguments]) found.push_back(textOf(argument).value_or(""));
    return found;
  }
}

std::int32_t FoundationProcessInfo::processIdentifier() const {
  @autoreleasepool {
    return [[NSProcessInfo processInfo] processIdentifier];
  }
}

std::string FoundationProcessInfo::operatingSystemVersionString() const {
  @autoreleasepool {
    return textOf([[NSProcessInfo processInfo] operatingSystemVersionString]).value_or("");
  }
}

}  // namespace orvo
