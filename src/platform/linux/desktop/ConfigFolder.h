// Where a person's settings are.
#pragma once

#include <string>

namespace orvo {

// XDG_CONFIG_HOME, or ~/.config where that is unset or not absolute; it need not exist.
std::string configFolder();

}  // namespace orvo
