#include "fulltext/searching/term_places.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "text/word_key.h"

namespace quorvex::textsearch {

namespace {

bool holds(const std::vector<std::string>& terms, std::string_view term) {
  return std::ranges::binary_search(terms, term);
}

void sortOut(std::vector<std::string>& terms) {
  std::ranges::sort(terms);
  terms.erase(std::unique(terms.begin(), terms.end()), terms.end());
}

}  // namespace

TSSearchTerms termsOf(const std::vector<RankedWord>& words) {
  TSSearchTerms terms;
  std::optional<std::size_t> whole;  // of the parts added last, which stand together
  for (const RankedWord& word : words) {
    const std::vector<std::string>& forms = word.terms->forms;
    if (!word.partOf) {
      terms.words.insert(terms.words.end(), forms.begin(), forms.end());
      continue;
    }
    if (whole != word.partOf) {
      whole = word.partOf;
      terms.parts.push_back({.joined = words[*word.partOf].terms->forms, .parts = {}});
    }
    // Other joined words with the same part are far from what is meant.
    std::ranges::copy_if(forms, std::back_inserter(terms.parts.back().parts),
                         [](const std::string& form) { return partsOfWord(form).size() < 2; });
  }
  sortOut(terms.words);
  for (TSSearchTerms::Parts& each : terms.parts)
    sortOut(each.parts);
  return terms;
}

void TermPlaces::add(const Token& token) {
  for (std::size_t i = 0; i < _terms.parts.size(); ++i) {
    if (holds(_terms.parts[i].joined, token.term)) _isJoinedThere[i] = true;
  }
  const TSTextRange range{token.begin, token.end};
  if (holds(_terms.words, token.term)) {
    _places.push_back({range, {}});
  } else if (std::ranges::any_of(_terms.parts, [&](const TSSearchTerms::Parts& each) {
               return holds(each.parts, token.term);
             })) {
    _places.push_back({range, std::string(token.term)});
  }
}

bool TermPlaces::counts(const Place& place) const {
  if (place.part.empty()) return true;
  for (std::size_t i = 0; i < _terms.parts.size(); ++i) {
    if (!_isJoinedThere[i] && holds(_terms.parts[i].parts, place.part)) return true;
  }
  return false;
}

std::vector<TSTextRange> TermPlaces::take() {
  std::vector<TSTextRange> ranges;
  for (const Place& place : _places) {
    if (counts(place)) ranges.push_back(place.range);
  }
  return ranges;
}

}  // namespace quorvex::textsearch
