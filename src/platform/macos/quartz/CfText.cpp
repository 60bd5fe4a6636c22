#include "platform/macos/quartz/CfText.h"

namespace orvo {

Owned<CFStringRef> cfText(std::string_view text) {
  const auto* const bytes = reinterpret_cast<const UInt8*>(text.data());
  return Owned(CFStringCreateWithBytes(kCFAllocatorDefault, bytes, static_cast<CFIndex>(text.size()),
                                       kCFStringEncodingUTF8, static_cast<Boolean>(false)));
}

std::string textOf(CFStringRef text) {
  const CFRange whole{0, CFStringGetLength(text)};
  const auto copyTo = [&](UInt8* buffer, CFIndex size) {
    CFIndex used = 0;
    CFStringGetBytes(text, whole, kCFStringEncodingUTF8, '?', static_cast<Boolean>(false), buffer, size, &used);
    return used;
  };
  std::string result(static_cast<std::size_t>(copyTo(nullptr, 0)), '\0');
  copyTo(reinterpret_cast<UInt8*>(result.data()), static_cast<CFIndex>(result.size()));
  return result;
}

}  // namespace orvo
