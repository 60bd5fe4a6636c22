#include "support/AsciiText.h"

#include <algorithm>
#include <string>

namespace orvo {
namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }
char lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

// Cuts a run of digits off the front, without its leading zeros.
std::string_view takeNumber(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(number.size());
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

int compareNumbers(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

}  // namespace

int AsciiText::standardCompare(std::string_view left, std::string_view right) const {
  while (!left.empty() && !right.empty()) {
    int order = 0;
    if (isDigit(left.front()) && isDigit(right.front())) {
      order = compareNumbers(takeNumber(left), takeNumber(right));
    } else {
      order = lower(left.front()) - lower(right.front());
      left.remove_prefix(1);
      right.remove_prefix(1);
    }
    if (order != 0) return order;
  }
  return static_cast<int>(right.empty()) * static_cast<int>(!left.empty()) -
         static_cast<int>(left.empty()) * static_cast<int>(!right.empty());
}

bool AsciiText::caseInsensitiveContains(std::string_view text, std::string_view needle) const {
  if (needle.empty()) return false;
  const auto found = std::search(text.begin(), text.end(), needle.begin(), needle.end(),
                                 [](char a, char b) { return lower(a) == lower(b); });
  return found != text.end();
}

}  // namespace orvo
