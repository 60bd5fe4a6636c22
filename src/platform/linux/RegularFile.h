// Files that others write, read so that none of them holds this process up or fills its memory. Any thread.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace orvo {

// The whole of a regular file of at most `limit` bytes, links followed. Absent with the reason in `error` for
// everything else: a pipe or a device is not waited for, and one that is too large is not read to its end.
std::optional<std::string> readRegularFile(const std::filesystem::path& path, std::size_t limit,
                                           std::error_code& error);

// More than a document of an application, such as a desktop entry, has in good faith.
inline constexpr std::size_t documentLimit = std::size_t{256} * 1024;

// The same for whom a file that cannot be read is an empty one.
std::string contentOf(const std::filesystem::path& path, std::size_t limit = documentLimit);

}  // namespace orvo
