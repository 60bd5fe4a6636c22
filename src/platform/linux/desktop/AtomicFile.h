// Replaces files whole, so that a reader or a crash sees the old contents or the new, never a part.
// Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

// Makes missing folders, follows a symbolic link at `path`. Absent on success, else the system's own
// words on why it failed; the file is then as it was.
std::optional<std::string> replaceFile(const std::string& path, std::string_view contents);

}  // namespace orvo
