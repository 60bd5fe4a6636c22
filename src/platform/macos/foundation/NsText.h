// Texts in UTF-8 to and from Foundation. For Objective-C++ only; any thread, inside an autorelease pool.
#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

// Autoreleased and never nil: what is not UTF-8 becomes the empty text.
inline NSString* nsText(std::string_view text) {
  NSString* const made = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
  return made != nil ? [made autorelease] : @"";
}

// Absent for nil, and for a text with half a surrogate pair, which UTF-8 cannot express.
inline std::optional<std::string> textOf(NSString* text) {
  const char* const bytes = [text UTF8String];
  return bytes != nullptr ? std::optional<std::string>(bytes) : std::nullopt;
}

}  // namespace orvo
