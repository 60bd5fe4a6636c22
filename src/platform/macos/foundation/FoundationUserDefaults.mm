#include "platform/macos/foundation/FoundationUserDefaults.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

std::optional<Bytes> FoundationUserDefaults::data(std::string_view key) const {
  @autoreleasepool {
    NSData* const data = [[NSUserDefaults standardUserDefaults] dataForKey:nsText(key)];
    if (data == nil) return std::nullopt;
    return Bytes(static_cast<const char*>([data bytes]), [data length]);
  }
}

void FoundationUserDefaults::setData(std::string_view key, const Bytes& value) {
  @autoreleasepool {
    NSData* const data = [NSData dataWithBytes:value.data() length:value.size()];
    [[NSUserDefaults standardUserDefaults] setObject:data forKey:nsText(key)];
  }
}

bool FoundationUserDefaults::boolean(std::string_view key) const {
  @autoreleasepool {
    return [[NSUserDefaults standardUserDefaults] boolForKey:nsText(key)];
  }
}

void FoundationUserDefaults::setBoolean(std::string_view key, bool value) {
  @autoreleasepool {
    [[NSUserDefaults standardUserDefaults] setBool:value forKey:nsText(key)];
  }
}

}  // namespace orvo
