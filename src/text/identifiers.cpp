#include "text/identifiers.h"

#include <algorithm>

namespace quorvex {

bool looksLikeCode(std::string_view word) {
  if (word.size() < 2) return false;
  return !std::ranges::all_of(word, isLetter) || std::ranges::any_of(word.substr(1), isUpper);
}

std::size_t qualifierSize(std::string_view name) {
  const std::size_t end = name.find_last_not_of(nameSeparators);
  if (end == name.npos) return 0;
  const std::size_t separator = name.find_last_of(nameSeparators, end);
  return separator == name.npos ? 0 : separator + 1;
}

bool holdsIdentifier(std::string_view text, std::string_view identifier) {
  if (identifier.empty()) return false;
  for (std::size_t at = text.find(identifier); at != text.npos;
       at = text.find(identifier, at + 1)) {
    const std::size_t end = at + identifier.size();
    const bool begins =
        at == 0 || !isIdentifierByte(text[at - 1]) || !isIdentifierByte(identifier.front());
    const bool ends =
        end == text.size() || !isIdentifierByte(text[end]) || !isIdentifierByte(identifier.back());
    if (begins && ends) return true;
  }
  return false;
}

}  // namespace quorvex
