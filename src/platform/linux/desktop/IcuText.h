// Comparison of texts by ICU in the person's language. Owned by main.cpp; any thread.
#pragma once

#include "platform/LocalizedText.h"

#include <unicode/coll.h>

#include <cstdint>
#include <memory>

namespace orvo {

class IcuText final : public LocalizedText {
 public:
  explicit IcuText(const icu::Locale& locale = icu::Locale::getDefault());

  int standardCompare(std::string_view left, std::string_view right) const override;
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override;

 private:
  const std::uint32_t folding_;
  // Absent when ICU's data is missing; texts are then compared by their bytes.
  std::unique_ptr<const icu::Collator> collator_;
};

}  // namespace orvo
