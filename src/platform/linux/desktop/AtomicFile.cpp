#include "platform/linux/desktop/AtomicFile.h"

#include <QSaveFile>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace orvo {

namespace {

// The rename itself is on the disk only once its folder is. Best effort: some file systems refuse.
void syncFolder(const std::filesystem::path& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace

std::optional<std::string> replaceFile(const std::string& path, std::string_view contents) {
  const auto folder = std::filesystem::path(path).parent_path();
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) return error.message();
  QSaveFile file(QString::fromStdString(path));
  const auto size = static_cast<qint64>(contents.size());
  // Unbuffered: Qt 6.4 forgets a failure of the flush that its commit makes and renames a cut file.
  const bool written =
      file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(contents.data(), size) == size;
  if (!written) {
    auto reason = file.errorString().toStdString();
    file.cancelWriting();
    return reason;
  }
  if (!file.commit()) return file.errorString().toStdString();
  syncFolder(folder);
  return std::nullopt;
}

}  // namespace orvo
