#include "fulltext/searching/word_locator.h"

#include <algorithm>
#include <vector>

namespace quorvex::textsearch {

std::optional<TSLocatedWords> WordLocator::locate(std::uint32_t document, const TSTextPart& part,
                                                  std::uint32_t begin, std::uint32_t end,
                                                  std::size_t margin) {
  const std::vector<std::uint32_t> terms = _index.occurrences(document);
  if (begin < part.start || begin >= terms.size()) return std::nullopt;
  TSLocatedWords found;
  bool reached = false;
  std::size_t following = 0;
  std::size_t position = part.start;  // of the next word
  bool isBehindGap = part.start > 0 && terms[part.start - 1] == IndexReader::noTerm;
  _tokenizer.reset(part.text);
  for (Token token; _tokenizer.next(token);) {
    const bool leftOut = _filter.leavesOut(token.term);
    // Adjacent words that are left out share a position.
    const bool isNew = !leftOut || !isBehindGap;
    isBehindGap = leftOut;
    if (isNew) ++position;
    if (position > terms.size()) return std::nullopt;
    const std::size_t at = std::max<std::size_t>(position, 1) - 1;
    const bool isNear = at + margin >= begin && following < margin;
    if (!isNear) {
      if (following >= margin && !part.isWhole) break;
      continue;
    }
    if (leftOut != (terms[at] == IndexReader::noTerm) ||
        (!leftOut && _index.terms().term(terms[at]) != token.term)) {
      return std::nullopt;
    }
    if (at < begin) {
      ++found.first;
    } else if (at < end) {
      found.last = found.words.size();
      reached = true;
    } else {
      ++following;
    }
    found.words.push_back({token.begin, token.end});
  }
  if (!reached || (part.isWhole && position != terms.size())) return std::nullopt;
  return found;
}

}  // namespace quorvex::textsearch
