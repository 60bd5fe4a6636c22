#include "platform/linux/desktop/IcuText.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <cstring>

namespace orvo {

namespace {

icu::StringPiece piece(std::string_view text) { return {text.data(), static_cast<std::int32_t>(text.size())}; }

// Letters may be composed or not, and folding may take them apart.
icu::UnicodeString composed(const icu::UnicodeString& text) {
  UErrorCode error = U_ZERO_ERROR;
  const auto* composer = icu::Normalizer2::getNFCInstance(error);
  return U_SUCCESS(error) != 0 ? composer->normalize(text, error) : text;
}

icu::UnicodeString folded(std::string_view text, std::uint32_t folding) {
  return composed(composed(icu::UnicodeString::fromUTF8(piece(text))).foldCase(folding));
}

// In Turkish and Azerbaijani the dotted and the dotless i are two letters.
std::uint32_t foldingOf(const icu::Locale& locale) {
  const std::string_view language = locale.getLanguage();
  return language == "tr" || language == "az" ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
}

std::unique_ptr<const icu::Collator> makeCollator(const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  // The rules of LANG=C put every capital before every small letter; they are nobody's language.
  const bool isPosix = std::strcmp(locale.getVariant(), "POSIX") == 0;
  std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(isPosix ? icu::Locale::getRoot() : locale, error));
  if (U_FAILURE(error) != 0) return nullptr;
  collator->setStrength(icu::Collator::SECONDARY);
  collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, error);
  return collator;
}

}  // namespace

IcuText::IcuText(const icu::Locale& locale) : folding_(foldingOf(locale)), collator_(makeCollator(locale)) {}

int IcuText::standardCompare(std::string_view left, std::string_view right) const {
  if (!collator_) return left.compare(right);
  UErrorCode error = U_ZERO_ERROR;
  return collator_->compareUTF8(piece(left), piece(right), error);
}

bool IcuText::caseInsensitiveContains(std::string_view text, std::string_view needle) const {
  return !needle.empty() && folded(text, folding_).indexOf(folded(needle, folding_)) >= 0;
}

}  // namespace orvo
