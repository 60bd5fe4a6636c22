// The main bundle. Owned by main.cpp; any thread.
#pragma once

#include "platform/Bundle.h"

namespace orvo {

class FoundationBundle final : public Bundle {
 public:
  std::optional<std::string> identifier() const override;
  std::optional<std::string> infoText(std::string_view key) const override;
  std::string path() const override;
};

}  // namespace orvo
