#include "text/operators.h"

#include "text/identifiers.h"

namespace quorvex {

namespace {

/// Of one sign, such as "---", "***" or "...": more of them draw a line.
constexpr std::size_t longestRepetition = 3;

bool isSign(char c) {
  return operatorByte(c) == OperatorByte::sign || c == '.' || c == ':' || c == '/' || c == '-';
}

bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// `before`, `after`: what the sign stands between; a blank at the ends of the text.
bool isOperatorSign(char sign, char before, char after) {
  switch (sign) {
    case '.':
    case ':':
    case '/':
    case '-':
      return false;
    case '?':
    case '!':
      return isBlank(before) || !(isBlank(after) || after == '"' || after == ')');
    case '%':
      return !isDigit(before);
    case '@':
      return !isIdentifierByte(before) || !isIdentifierByte(after);
    default:
      return true;
  }
}

bool isOperator(std::string_view run, char before, char after) {
  if (run.size() == 1) return isOperatorSign(run.front(), before, after);
  if (run.size() > maximumOperatorSize) return false;
  const bool isRepetition = run.find_first_not_of(run.front()) == run.npos;
  if (!isRepetition) return true;
  if (run.size() > longestRepetition) return false;
  // The name of an option, or an ellipsis.
  if (run.front() == '-') return !isIdentifierByte(after);
  return run.front() != '.' || isBlank(before) || !isBlank(after);
}

/// Removes from a run what belongs to the text around it: the full stop in "use a++." and the angle
/// brackets of placeholders in "<from>..<to>".
std::string_view trimmed(std::string_view run, char before, char after) {
  if (run.size() > 1 && run.ends_with('.') && run[run.size() - 2] != '.' && isBlank(after)) {
    run.remove_suffix(1);
  }
  const std::size_t open = run.find_first_not_of('>');
  if (open > 0 && open < run.size() && isIdentifierByte(before) &&
      std::string_view("./:").find(run[open]) != std::string_view::npos) {
    run.remove_prefix(open);
  }
  if (run.size() > 1 && run.ends_with('<') && isIdentifierByte(after) &&
      std::string_view("./").find(run[run.size() - 2]) != std::string_view::npos) {
    run.remove_suffix(1);
  }
  return run;
}

}  // namespace

std::string_view nextOperator(std::string_view text, std::size_t& position, std::size_t end) {
  while (position < end) {
    const std::size_t begin = position++;
    if (!mayBeginOperator(text, begin)) continue;
    if (!isSign(text[begin])) {
      const std::string_view pair = text.substr(begin, 2);
      if (pair != "[]" && pair != "()") continue;
      if (!text.substr(0, begin).ends_with("operator")) continue;
      ++position;
      return pair;
    }
    while (position < end && isSign(text[position]))
      ++position;
    const char before = begin > 0 ? text[begin - 1] : ' ';
    const char after = position < text.size() ? text[position] : ' ';
    const std::string_view run = trimmed(text.substr(begin, position - begin), before, after);
    if (isOperator(run, before, after)) return run;
  }
  return {};
}

}  // namespace quorvex
