#include "fulltext/searching/term_keys.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <numeric>
#include <optional>
#include <utility>

#include "text/identifiers.h"

namespace quorvex::textsearch {

namespace {

// What a term has.
constexpr unsigned smallLetters = 1;
constexpr unsigned digits = 2;
constexpr unsigned joints = 4;  ///< and capitals, which no term has
constexpr unsigned beyondAscii = 8;

constexpr std::array<std::uint8_t, 256> contents = []() {
  std::array<std::uint8_t, 256> kinds{};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const auto c = static_cast<char>(i);
    kinds[i] = static_cast<std::uint8_t>(i >= 0x80    ? beyondAscii
                                         : isLower(c) ? smallLetters
                                         : isDigit(c) ? digits
                                                      : joints);
  }
  return kinds;
}();

unsigned contentsOf(std::string_view term) {
  unsigned all = 0;
  for (const char c : term)
    all |= contents[static_cast<unsigned char>(c)];
  return all;
}

/// Order-preserving in eight bits: exact below 16, then with three bits behind the first.
std::uint32_t rankOf(std::uint32_t count) {
  if (count < 8) return count;
  const auto width = static_cast<std::uint32_t>(std::bit_width(count));
  return (width - 3) * 8 + (count >> (width - 4) & 7);
}

constexpr std::uint32_t rankMask = 0xFF;

/// Zero in the bits of the rank.
std::uint32_t hashOf(std::string_view text) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(text)) & ~rankMask;
}

/// Of one table; what comes later is not found. No book comes near it.
constexpr std::size_t mostEntries = std::size_t{1} << 22;

/// Visits the texts by which a joined term is found, as ranges of its key and of the term: what
/// stands between joints, the words of that which digits end, and all behind a separator of names.
/// Single characters and what begins with digits, such as "0x1f", have no parts.
template <typename Visit>
void forEachPart(const WordKey& key, Visit visit) {
  using Part = WordKey::Part;
  const std::vector<Part>& parts = key.parts;
  if (parts.size() < 2 || std::ranges::all_of(parts, &Part::isNumber)) return;
  const auto visitRange = [&](const Part& first, const Part& last) {
    const std::size_t size = last.keyEnd - first.keyBegin;
    if (last.end - first.begin < 2 || size == 0) return;
    visit(std::string_view(key.text).substr(first.keyBegin, size), first.begin, last.end);
  };
  for (std::size_t begin = 0, end = 0; begin < parts.size(); begin = end) {
    end = begin + 1;
    while (end < parts.size() && !parts[end].isBehindJoint)
      ++end;
    if (end - begin < parts.size()) visitRange(parts[begin], parts[end - 1]);
    if (begin > 0 && end < parts.size() && parts[begin].isQualified) {
      visitRange(parts[begin], parts.back());
    }
    if (end - begin == 1 || parts[begin].isNumber) continue;
    for (std::size_t i = begin; i < end; ++i) {
      if (!parts[i].isNumber) visitRange(parts[i], parts[i]);
    }
  }
}

}  // namespace

void TermKeys::Table::add(std::string_view text, std::uint32_t term, std::uint32_t documentCount) {
  if (_drafts.size() == mostEntries) return;
  _drafts.push_back({hashOf(text) | rankOf(documentCount), term});
}

void TermKeys::Table::finish() {
  constexpr std::size_t entriesPerBucket = 2;
  const std::size_t buckets = std::bit_ceil(_drafts.size() / entriesPerBucket + 1);
  _begins.assign(buckets + 1, 0);
  for (const Entry& draft : _drafts)
    ++_begins[bucketOf(draft.hashAndRank)];
  std::partial_sum(_begins.begin(), _begins.end(), _begins.begin());
  _entries.resize(_drafts.size());
  // Each bucket is filled from its end down; order within it does not matter.
  for (const Entry& draft : _drafts)
    _entries[--_begins[bucketOf(draft.hashAndRank)]] = draft;
  _drafts = {};
}

std::vector<std::uint32_t> TermKeys::Table::find(std::string_view text) const {
  const std::uint32_t hash = hashOf(text);
  const std::size_t bucket = bucketOf(hash);
  std::vector<Entry> found;
  for (std::uint32_t i = _begins[bucket]; i < _begins[bucket + 1]; ++i) {
    if ((_entries[i].hashAndRank & ~rankMask) == hash) found.push_back(_entries[i]);
  }
  const std::size_t count = std::min(found.size(), mostTerms);
  std::ranges::partial_sort(found, found.begin() + static_cast<std::ptrdiff_t>(count),
                            [](const Entry& a, const Entry& b) {
                              return std::pair(b.hashAndRank & rankMask, a.term) <
                                     std::pair(a.hashAndRank & rankMask, b.term);
                            });
  std::vector<std::uint32_t> terms(count);
  std::transform(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count), terms.begin(),
                 [](const Entry& entry) { return entry.term; });
  return terms;
}

TermKeys::TermKeys(const IndexReader& index, const TitleIndex& titles)
    : _index(index), _titles(titles) {
  // Both lists are in byte order.
  const std::vector<std::string>& inTitles = titles.terms();
  std::size_t next = 0;
  WordKey key;
  const auto addTitle = [&] {
    const auto term = static_cast<std::uint32_t>(next);
    add(inTitles[next], index.terms().size() + term,
        static_cast<std::uint32_t>(titles.postings(term).size()), key);
  };
  for (TermDictionary::Cursor cursor(index.terms(), 0); cursor.next();) {
    for (; next < inTitles.size(); ++next) {
      const int order = inTitles[next].compare(cursor.term());
      if (order == 0) continue;
      if (order > 0) break;
      addTitle();
    }
    add(cursor.term(), cursor.id(), cursor.entry().documentCount, key);
  }
  for (; next < inTitles.size(); ++next)
    addTitle();
  _byKey.finish();
  _byPart.finish();
}

void TermKeys::add(std::string_view term, std::uint32_t number, std::uint32_t documentCount,
                   WordKey& key) {
  const unsigned has = contentsOf(term);
  if (has == smallLetters || has == digits) return;
  const bool differ = readKey(term, Umlauts::bare, key);
  if (key.text != term) _byKey.add(key.text, number, documentCount);
  addParts(key, number, documentCount);
  if (!differ) return;
  readKey(term, Umlauts::digraph, key);
  _byKey.add(key.text, number, documentCount);
  addParts(key, number, documentCount);
}

void TermKeys::addParts(const WordKey& key, std::uint32_t number, std::uint32_t documentCount) {
  forEachPart(key, [&](std::string_view text, std::size_t, std::size_t) {
    _byPart.add(text, number, documentCount);
  });
}

std::string TermKeys::term(std::uint32_t number) const {
  const std::uint32_t inTexts = _index.terms().size();
  if (number < inTexts) return _index.terms().term(number).value_or("");
  const std::uint32_t inTitles = number - inTexts;
  return inTitles < _titles.terms().size() ? _titles.terms()[inTitles] : std::string();
}

bool TermKeys::hasTerm(std::string_view term) const {
  return _index.terms().find(term) || std::ranges::binary_search(_titles.terms(), term);
}

std::vector<std::string> TermKeys::likeWord(std::string_view word) const {
  std::vector<std::string> found;
  for (const std::string& key : keysOfWord(word)) {
    if (hasTerm(key)) found.push_back(key);
    for (const std::uint32_t number : _byKey.find(key)) {
      std::string candidate = term(number);
      const std::vector<std::string> keys = keysOfWord(candidate);
      if (std::ranges::find(keys, key) != keys.end()) found.push_back(std::move(candidate));
    }
  }
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  std::erase(found, word);
  return found;
}

std::vector<TermKeys::JoinedTerm> TermKeys::withPart(std::string_view part) const {
  std::vector<JoinedTerm> found;
  WordKey key;
  const auto placeIn = [&](const std::string& candidate, std::string_view text) {
    std::optional<JoinedTerm> place;
    for (const Umlauts umlauts : {Umlauts::bare, Umlauts::digraph}) {
      if (place) break;
      readKey(candidate, umlauts, key);
      forEachPart(key, [&](std::string_view other, std::size_t begin, std::size_t end) {
        if (!place && other == text) place = {candidate, begin, end};
      });
    }
    return place;
  };
  for (const std::string& text : keysOfWord(part)) {
    for (const std::uint32_t number : _byPart.find(text)) {
      const std::string candidate = term(number);
      const auto isSame = [&](const JoinedTerm& other) { return other.term == candidate; };
      if (found.size() == mostTerms || std::ranges::any_of(found, isSame)) continue;
      if (const std::optional<JoinedTerm> place = placeIn(candidate, text)) found.push_back(*place);
    }
  }
  return found;
}

}  // namespace quorvex::textsearch
