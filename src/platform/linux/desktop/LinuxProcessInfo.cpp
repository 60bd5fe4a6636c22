#include "platform/linux/desktop/LinuxProcessInfo.h"

#include <glib.h>
#include <unistd.h>

#include <utility>

namespace orvo {

LinuxProcessInfo::LinuxProcessInfo(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

std::int32_t LinuxProcessInfo::processIdentifier() const { return getpid(); }

std::string LinuxProcessInfo::operatingSystemVersionString() const {
  g_autofree char* name = g_get_os_info(G_OS_INFO_KEY_PRETTY_NAME);
  return name != nullptr && *name != '\0' ? name : "Linux";
}

}  // namespace orvo
