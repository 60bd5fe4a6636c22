#include "platform/macos/foundation/FoundationBundle.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

namespace {

InfoValue infoValueOf(id value) {
  if ([value isKindOfClass:[NSString class]]) return textOf(value).value_or("");
  if ([value isKindOfClass:[NSNumber class]]) return [value doubleValue];
  return std::monostate{};
}

}  // namespace

std::optional<std::string> FoundationBundle::identifier() const {
  @autoreleasepool {
    return textOf([[NSBundle mainBundle] bundleIdentifier]);
  }
}

std::optional<InfoValue> FoundationBundle::infoValue(std::string_view key) const {
  @autoreleasepool {
    id const value = [[NSBundle mainBundle] objectForInfoDictionaryKey:nsText(key)];
    if (value == nil) return std::nullopt;
    return infoValueOf(value);
  }
}

std::string FoundationBundle::path() const {
  @autoreleasepool {
    return textOf([[[NSBundle mainBundle] bundleURL] path]).value_or("");
  }
}

}  // namespace orvo
