#include "platform/macos/foundation/FoundationBundle.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

std::optional<std::string> FoundationBundle::identifier() const {
  @autoreleasepool {
    return textOf([[NSBundle mainBundle] bundleIdentifier]);
  }
}

std::optional<std::string> FoundationBundle::infoText(std::string_view key) const {
  @autoreleasepool {
    id const value = [[NSBundle mainBundle] objectForInfoDictionaryKey:nsText(key)];
    return [value isKindOfClass:[NSString class]] ? textOf(value) : std::nullopt;
  }
}

std::string FoundationBundle::path() const {
  @autoreleasepool {
    return textOf([[[NSBundle mainBundle] bundleURL] path]).value_or("");
  }
}

}  // namespace orvo
