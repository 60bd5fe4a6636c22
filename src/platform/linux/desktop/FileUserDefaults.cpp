#include "platform/linux/desktop/FileUserDefaults.h"

#include "platform/linux/desktop/AtomicFile.h"

#include <QByteArray>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace orvo {

namespace {

// Bytes stand as {"base64": text}, so that every byte survives a format that knows only Unicode.
constexpr const char* bytesKey = "base64";

// Past this many unreadable files the last name is used again.
constexpr int keptFiles = 100;

std::string asideName(const std::string& path) {
  std::string name;
  for (int number = 1; number <= keptFiles; ++number) {
    name = path + ".damaged-" + std::to_string(number);
    if (std::error_code error; !std::filesystem::exists(name, error)) break;
  }
  return name;
}

}  // namespace

FileUserDefaults::FileUserDefaults(std::string path) : path_(std::move(path)) {}

std::optional<Bytes> FileUserDefaults::data(std::string_view key) const {
  const auto found = values().find(key);
  if (found == values().end() || !found->is_object()) return std::nullopt;
  const auto text = found->find(bytesKey);
  if (text == found->end() || !text->is_string()) return std::nullopt;
  const auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromStdString(text->get<std::string>()),
                                                      QByteArray::AbortOnBase64DecodingErrors);
  if (!decoded) return std::nullopt;
  return (*decoded).toStdString();
}

void FileUserDefaults::setData(std::string_view key, const Bytes& value) {
  set(key, {{bytesKey, QByteArray::fromStdString(value).toBase64().toStdString()}});
}

bool FileUserDefaults::boolean(std::string_view key) const {
  const auto found = values().find(key);
  return found != values().end() && found->is_boolean() && found->get<bool>();
}

void FileUserDefaults::setBoolean(std::string_view key, bool value) { set(key, value); }

void FileUserDefaults::set(std::string_view key, nlohmann::json value) {
  values();  // what the file already holds is kept
  values_[std::string(key)] = std::move(value);
  mayReplace_ = mayReplace_ || moveAside("it is still unreadable");
  if (!mayReplace_) return;
  if (const auto error = replaceFile(path_, values_.dump(2) + '\n')) {
    std::fprintf(stderr, "Orvo: the settings could not be stored in %s: %s\n", path_.c_str(), error->c_str());
  }
}

const nlohmann::json& FileUserDefaults::values() const {
  if (!std::exchange(loaded_, true)) load();
  return values_;
}

void FileUserDefaults::load() const {
  if (std::error_code error; !std::filesystem::exists(path_, error) && !error) return;
  QFile file(QString::fromStdString(path_));
  if (!file.open(QIODevice::ReadOnly)) {
    mayReplace_ = moveAside(file.errorString().toStdString());
    return;
  }
  auto document = nlohmann::json::parse(file.readAll().toStdString(), nullptr, false);
  if (document.is_object()) {
    values_ = std::move(document);
  } else {
    mayReplace_ = moveAside("it holds no settings");
  }
}

bool FileUserDefaults::moveAside(const std::string& reason) const {
  const std::string name = asideName(path_);
  const bool moved = std::rename(path_.c_str(), name.c_str()) == 0 || errno == ENOENT;
  const std::string outcome =
      moved ? "kept as " + name : "which could not be moved aside: " + std::string(std::strerror(errno));
  std::fprintf(stderr, "Orvo: the settings in %s cannot be read (%s), %s\n", path_.c_str(), reason.c_str(),
               outcome.c_str());
  return moved;
}

std::string FileUserDefaults::standardPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString() + "/orvo/settings.json";
}

}  // namespace orvo
