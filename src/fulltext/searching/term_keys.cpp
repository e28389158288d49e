#include "fulltext/searching/term_keys.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "common/unicode.h"

namespace quorvex::textsearch {

namespace {

/// Visits the terms of some groups that may have keys.
template <typename Visit>
void forEachTermIn(const TermDictionary& terms, const std::vector<std::uint32_t>& groups,
                   const Visit& visit) {
  for (const std::uint32_t group : groups) {
    TermDictionary::Cursor cursor(terms, group * termsPerGroup);
    for (std::uint32_t left = termsPerGroup; left > 0 && cursor.next(); --left) {
      if (mayHaveKeys(cursor.term())) visit(cursor);
    }
  }
}

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isAlnum(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

/// Whether a text without its joints ends with another. Both are ASCII.
bool endsWithoutJoints(std::string_view text, std::string_view end) {
  std::size_t left = end.size();
  for (std::size_t at = text.size(); at-- > 0 && left > 0;) {
    if (text[at] == end[left - 1]) {
      --left;
    } else if (isAlnum(text[at])) {
      return false;
    }
  }
  return left == 0;
}

/// Whether a term has a part, before it is taken apart: only ASCII shows that it has not.
bool mayHavePart(std::string_view term, std::string_view part) {
  return term.find(part) != term.npos || endsWithoutJoints(term, part) || !isAscii(term);
}

/// The first place of a part in a term.
std::optional<TermKeys::JoinedTerm> placeOf(std::string_view term, std::string_view part) {
  std::optional<TermKeys::JoinedTerm> place;
  WordKey key;
  visitKeys(term, key,
            {[](std::string_view) {},
             [&](std::string_view text, std::size_t begin, std::size_t end) {
               if (!place && text == part) place = {std::string(term), begin, end};
             }});
  return place;
}

}  // namespace

std::string TermKeys::term(std::uint32_t number) const {
  const std::uint32_t inTexts = _index.terms().size();
  if (number < inTexts) return _index.terms().term(number).value_or("");
  return _index.titles().terms().term(number - inTexts).value_or("");
}

bool TermKeys::hasTerm(std::string_view term) const {
  return _index.terms().find(term) || _index.titles().terms().find(term);
}

std::vector<std::string> TermKeys::termsWithKey(const std::string& key) const {
  std::vector<std::string> found;
  const JoinedTermTable::Groups groups = _index.joinedTerms().withKey(key);
  const auto add = [&](const TermDictionary::Cursor& cursor) {
    const std::string_view term = cursor.term();
    if (isAscii(term) && !endsWithoutJoints(term, key)) return;
    const std::vector<std::string> keys = keysOfWord(term);
    if (std::ranges::find(keys, key) != keys.end()) found.emplace_back(term);
  };
  forEachTermIn(_index.terms(), groups.ofTexts, add);
  forEachTermIn(_index.titles().terms(), groups.ofTitles, add);
  return found;
}

std::vector<std::string> TermKeys::likeWord(std::string_view word) const {
  std::vector<std::string> found;
  for (const std::string& key : keysOfWord(word)) {
    if (hasTerm(key)) found.push_back(key);
    std::ranges::move(termsWithKey(key), std::back_inserter(found));
  }
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  std::erase(found, word);
  return found;
}

std::vector<TermKeys::JoinedTerm> TermKeys::termsWithPart(const std::string& text) const {
  std::vector<JoinedTerm> found;
  if (const auto common = _index.joinedTerms().common(text)) {
    for (const std::uint32_t number : *common) {
      if (auto place = placeOf(term(number), text)) found.push_back(*std::move(place));
    }
    return found;
  }
  struct Candidate {
    std::uint32_t rank;
    std::uint32_t number;
    JoinedTerm term;
  };
  std::vector<Candidate> candidates;
  const auto offer = [&](const TermDictionary::Cursor& cursor, std::uint32_t before) {
    if (!mayHavePart(cursor.term(), text)) return;
    auto place = placeOf(cursor.term(), text);
    // Terms of titles are listed with the texts if these have them.
    if (!place || (before > 0 && _index.terms().find(cursor.term()))) return;
    const std::uint32_t rank = rankOfCount(cursor.entry().documentCount);
    candidates.push_back({rank, before + cursor.id(), *std::move(place)});
  };
  const JoinedTermTable::Groups groups = _index.joinedTerms().withPart(text);
  forEachTermIn(_index.terms(), groups.ofTexts,
                [&](const TermDictionary::Cursor& cursor) { offer(cursor, 0); });
  forEachTermIn(
      _index.titles().terms(), groups.ofTitles,
      [&](const TermDictionary::Cursor& cursor) { offer(cursor, _index.terms().size()); });
  std::ranges::sort(candidates, [](const Candidate& a, const Candidate& b) {
    return std::tie(b.rank, a.number) < std::tie(a.rank, b.number);
  });
  candidates.resize(std::min(candidates.size(), mostTerms));
  for (Candidate& candidate : candidates)
    found.push_back(std::move(candidate.term));
  return found;
}

std::vector<TermKeys::JoinedTerm> TermKeys::withPart(std::string_view part) const {
  std::vector<JoinedTerm> found;
  for (const std::string& text : keysOfWord(part)) {
    for (JoinedTerm& candidate : termsWithPart(text)) {
      const auto isSame = [&](const JoinedTerm& other) { return other.term == candidate.term; };
      if (found.size() == mostTerms || std::ranges::any_of(found, isSame)) continue;
      found.push_back(std::move(candidate));
    }
  }
  return found;
}

}  // namespace quorvex::textsearch
