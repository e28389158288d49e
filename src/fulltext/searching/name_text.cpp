#include "fulltext/searching/name_text.h"

#include <algorithm>
#include <array>

#include "common/unicode.h"
#include "text/identifiers.h"

namespace quorvex::textsearch {

std::string_view withoutQuotes(std::string_view text) {
  const auto isQuote = [](char c) { return c == '"' || c == '\'' || c == '`'; };
  while (text.size() > 1 && isQuote(text.front()) && text.back() == text.front()) {
    text.remove_prefix(1);
    text.remove_suffix(1);
  }
  return text;
}

std::string_view withoutCall(std::string_view text) {
  const std::size_t open = text.find('(');
  const bool isCall = open != text.npos && open > 0 && text.ends_with(')');
  return isCall ? trimWhitespaceAndNewlines(text.substr(0, open)) : text;
}

std::string nameInTitle(std::string_view title) {
  static constexpr auto separators = std::to_array<std::string_view>(
      {" - ", " \u2013 ", " \u2014 ", " | ", " \u00B7 ", " \u00BB ", "("});
  std::size_t end = title.size();
  for (const std::string_view separator : separators) {
    if (const std::size_t found = title.find(separator); found != 0) end = std::min(end, found);
  }
  const std::string_view part = trimWhitespace(title.substr(0, end));
  std::string kept;
  unsigned depth = 0;
  for (const char c : part) {
    if (c == '>' && depth > 0) {
      --depth;
    } else if (c == '<' && !kept.empty() && isIdentifierByte(kept.back()) &&
               !kept.ends_with("operator")) {
      ++depth;
    } else if (depth == 0) {
      kept += c;
    }
  }
  return depth == 0 ? kept : std::string(part);
}

bool endsWithParts(std::string_view name, std::string_view parts) {
  if (!name.ends_with(parts)) return false;
  const std::size_t begin = name.size() - parts.size();
  return begin == 0 || !isIdentifierByte(name[begin - 1]) || !isIdentifierByte(parts.front());
}

bool hasPartsBeginning(std::string_view name, std::string_view parts) {
  for (std::size_t at = name.find(parts); at != name.npos; at = name.find(parts, at + 1)) {
    if (at == 0 || (!isIdentifierByte(name[at - 1]) && name[at - 1] != ' ')) return true;
  }
  return false;
}

std::vector<std::string_view> wordsOf(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> words;
  while (true) {
    const std::size_t begin = text.find_first_not_of(separators);
    if (begin == text.npos) return words;
    const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    text.remove_prefix(end);
  }
}

}  // namespace quorvex::textsearch
