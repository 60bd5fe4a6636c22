// Texts in UTF-8 to and from Core Foundation. Any thread.
#pragma once

#include "platform/macos/quartz/Owned.h"

#include <string>
#include <string_view>

namespace orvo {

// Null for what is not UTF-8.
Owned<CFStringRef> cfText(std::string_view text);

// Half of a surrogate pair, which UTF-8 cannot express, becomes a question mark.
std::string textOf(CFStringRef text);

}  // namespace orvo
