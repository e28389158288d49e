#include "fulltext/writing/operator_counts.h"

namespace quorvex {

std::uint32_t OperatorCounts::numberOf(std::string_view found) {
  if (found.size() > 1) return _operators.insert(found);
  std::uint32_t& number = _numbersOfSigns[static_cast<unsigned char>(found.front()) & 0x7FU];
  if (number == 0) number = _operators.insert(found) + 1;
  return number - 1;
}

void OperatorCounts::scan(std::string_view text, std::size_t begin, std::size_t end) {
  while (true) {
    const std::string_view found = nextOperator(text, begin, end);
    if (found.empty()) return;
    const std::uint32_t number = numberOf(found);
    if (number >= _places.size()) _places.resize(std::size_t{number} + 1);
    std::size_t place = _places[number];
    const bool isKnown =
        place >= _textBegin && place < _counts.size() && _counts[place].number == number;
    if (!isKnown) {
      place = _counts.size();
      _places[number] = static_cast<std::uint32_t>(place);
      _counts.push_back({number, 0});
    }
    ++_counts[place].count;
  }
}

void OperatorCounts::endText() {
  _textBegin = _counts.size();
}

}  // namespace quorvex
