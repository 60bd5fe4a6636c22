#include "platform/linux/desktop/FileUserDefaults.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/desktop/AtomicFile.h"
#include "platform/linux/desktop/ConfigFolder.h"

#include <QByteArray>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace orvo {

namespace {

// Bytes stand as {"base64": text}, so that every byte survives a format that knows only Unicode.
constexpr const char* bytesKey = "base64";

// Bytes; far more than choices for every program there is.
constexpr std::size_t greatestSize = 4U << 20U;
// Levels. A document is stored by a function that calls itself for each.
constexpr int greatestDepth = 100;

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

// No object where the text is none.
nlohmann::json parsed(const std::string& text) {
  bool deep = false;
  const auto measure = [&deep](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
    deep = deep || depth > greatestDepth;
    return !deep;
  };
  auto document = nlohmann::json::parse(text, measure, false);
  return deep ? nlohmann::json() : document;
}

std::optional<FileUserDefaults::Stamp> stampOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileUserDefaults::Stamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                                 status.st_mtim.tv_nsec};
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

void FileUserDefaults::set(std::string_view key, const nlohmann::json& value) {
  values();  // what the file already holds is kept
  for (nlohmann::json* each : {&values_, &unsaved_}) (*each)[std::string(key)] = value;
  const bool wasTold = failure_.has_value();
  failure_ = store();
  if (failure_ && !wasTold) {
    std::fprintf(stderr, "Orvo: the settings could not be stored in %s: %s\n", path_.c_str(), failure_->c_str());
  }
}

std::optional<std::string> FileUserDefaults::store() {
  if (unreadable_) {
    if (auto error = moveAside(*unreadable_)) return error;
    unreadable_.reset();
  }
  if (auto error = replaceFile(path_, values_.dump(2) + '\n')) return error;
  unsaved_.clear();
  // Another copy may have written since, so the file is read again.
  stamp_.reset();
  return std::nullopt;
}

const nlohmann::json& FileUserDefaults::values() const {
  const auto now = stampOf(path_);
  if (now && now != stamp_) load();
  stamp_ = now;
  return values_;
}

// What cannot be read may be half of somebody's writing: it is left until there is something to store.
void FileUserDefaults::load() const {
  std::error_code error;
  const auto text = readRegularFile(path_, greatestSize, error);
  auto document = text ? parsed(*text) : nlohmann::json();
  if (document.is_object()) {
    values_ = std::move(document);
    values_.update(unsaved_);
    unreadable_.reset();
  } else if (error != std::errc::no_such_file_or_directory) {
    unreadable_ = text ? "it holds no settings" : error.message();
  }
}

std::optional<std::string> FileUserDefaults::moveAside(const std::string& reason) const {
  const std::string name = asideName(path_);
  if (std::rename(path_.c_str(), name.c_str()) != 0 && errno != ENOENT) {
    return "what is there cannot be read (" + reason + ") nor moved aside: " + std::strerror(errno);
  }
  std::fprintf(stderr, "Orvo: the settings in %s cannot be read (%s), kept as %s\n", path_.c_str(), reason.c_str(),
               name.c_str());
  return std::nullopt;
}

std::string FileUserDefaults::standardPath() { return configFolder() + "/orvo/settings.json"; }

}  // namespace orvo
