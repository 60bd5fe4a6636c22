// The bundle as a folder: Info.json beside the "bin" folder that holds the program. Owned by
// main.cpp; constant after construction, any thread.
#pragma once

#include "platform/Bundle.h"

#include <nlohmann/json.hpp>

namespace orvo {

class FolderBundle final : public Bundle {
 public:
  // `invocation` is the program's own name as it was started with, which may be a symbolic link.
  explicit FolderBundle(const std::string& invocation);

  std::optional<std::string> identifier() const override;
  std::optional<std::string> infoText(std::string_view key) const override;
  std::string path() const override { return path_; }
  // The program's path, within the bundle as it was launched.
  std::string program() const { return program_; }

 private:
  std::string path_;
  std::string program_;
  nlohmann::json info_ = nlohmann::json::object();
};

}  // namespace orvo
