#include "platform/linux/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace orvo {

namespace {

std::error_code systemError() { return {errno, std::system_category()}; }

std::optional<std::string> readAll(int descriptor, std::size_t limit, std::error_code& error) {
  constexpr std::size_t step = 65536;
  std::string contents;
  while (contents.size() <= limit) {
    const std::size_t size = contents.size();
    contents.resize(size + step);
    const ssize_t count = TEMP_FAILURE_RETRY(read(descriptor, contents.data() + size, step));
    contents.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0) error = systemError();
    if (count < 0) return std::nullopt;
    if (count == 0) return contents;
  }
  error = std::make_error_code(std::errc::file_too_large);
  return std::nullopt;
}

}  // namespace

std::optional<std::string> readRegularFile(const std::filesystem::path& path, std::size_t limit,
                                           std::error_code& error) {
  error.clear();
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) {
    error = systemError();
    return std::nullopt;
  }
  struct stat status {};
  std::optional<std::string> contents;
  if (fstat(descriptor, &status) != 0) {
    error = systemError();
  } else if (!S_ISREG(status.st_mode)) {
    error = std::make_error_code(std::errc::not_supported);
  } else {
    contents = readAll(descriptor, limit, error);
  }
  close(descriptor);
  return contents;
}

std::string contentOf(const std::filesystem::path& path, std::size_t limit) {
  std::error_code error;
  return readRegularFile(path, limit, error).value_or("");
}

}  // namespace orvo
