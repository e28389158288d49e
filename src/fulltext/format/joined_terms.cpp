#include "fulltext/format/joined_terms.h"

#include <algorithm>
#include <bit>
#include <tuple>

#include "common/bytes.h"
#include "common/checksum.h"
#include "common/lazy_reader.h"
#include "text/identifiers.h"

namespace quorvex {

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

/// Visits the parts of a term. Single characters and what begins with digits, such as "0x1f", have
/// none.
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

// A key is told from a part with the same text.
std::uint64_t hashOfKey(std::string_view key) {
  return checksum(key);
}
std::uint64_t hashOfPart(std::string_view part) {
  return ~checksum(part);
}

/// One byte per element: at most one in 46 groups is looked at for nothing.
constexpr unsigned probes = 5;

template <typename Visit>
void forEachProbe(std::uint64_t hash, std::size_t bytes, Visit visit) {
  const std::uint64_t bits = bytes * 8;
  const std::uint64_t step = hash >> 32U | 1U;
  std::uint64_t at = hash & 0xFFFFFFFFU;
  for (unsigned i = 0; i < probes; ++i, at += step)
    visit(static_cast<std::size_t>((at & 0xFFFFFFFFU) * bits >> 32U));
}

std::string filterOf(const std::vector<std::uint64_t>& hashes) {
  std::string filter(hashes.size(), '\0');
  for (const std::uint64_t hash : hashes) {
    forEachProbe(hash, filter.size(), [&](std::size_t bit) {
      filter[bit / 8] =
          static_cast<char>(static_cast<unsigned char>(filter[bit / 8]) | 1U << bit % 8);
    });
  }
  return filter;
}

bool mayHold(std::string_view filter, std::uint64_t hash) {
  if (filter.empty()) return false;
  bool all = true;
  forEachProbe(hash, filter.size(), [&](std::size_t bit) {
    const auto byte = static_cast<unsigned char>(filter[bit / 8]);
    all = all && (unsigned{byte} >> bit % 8 & 1U) != 0;
  });
  return all;
}

/// A part of a term.
struct Element {
  std::uint64_t hash;
  std::uint32_t group;
  std::uint32_t rank;
  std::uint32_t term;

  friend bool operator<(const Element& a, const Element& b) {
    return std::tie(a.hash, b.rank, a.term) < std::tie(b.hash, a.rank, b.term);
  }
};

/// Collects the keys and parts of all terms.
class Collector {
 public:
  explicit Collector(std::uint32_t groups) : _keys(groups) {}

  void add(std::string_view term, std::uint32_t group, std::uint32_t number, std::uint32_t count) {
    if (!mayHaveKeys(term)) return;
    const std::uint32_t rank = rankOfCount(count);
    visitKeys(term, _key,
              {[&](std::string_view key) { _keys[group].push_back(hashOfKey(key)); },
               [&](std::string_view part, std::size_t, std::size_t) {
                 _parts.push_back({hashOfPart(part), group, rank, number});
               }});
  }

  std::string take() {
    std::sort(_parts.begin(), _parts.end());
    std::string common;
    for (auto begin = _parts.begin(); begin != _parts.end();) {
      const auto end = std::find_if(
          begin, _parts.end(), [&](const Element& element) { return element.hash != begin->hash; });
      if (static_cast<std::size_t>(end - begin) > JoinedTermTable::mostTerms) {
        appendU64(common, begin->hash);
        for (std::size_t i = 0; i < JoinedTermTable::mostTerms; ++i)
          appendU32(common, begin[static_cast<std::ptrdiff_t>(i)].term);
      } else {
        for (auto element = begin; element != end; ++element)
          _keys[element->group].push_back(element->hash);
      }
      begin = end;
    }
    std::string section;
    appendText(section, common);
    for (std::vector<std::uint64_t>& hashes : _keys) {
      std::ranges::sort(hashes);
      hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
      appendText(section, filterOf(hashes));
    }
    return section;
  }

 private:
  std::vector<std::vector<std::uint64_t>> _keys;  ///< of each group
  std::vector<Element> _parts;
  WordKey _key;
};

}  // namespace

bool mayHaveKeys(std::string_view term) {
  unsigned has = 0;
  for (const char c : term)
    has |= contents[static_cast<unsigned char>(c)];
  return has != smallLetters && has != digits;
}

void visitKeys(std::string_view term, WordKey& key, const KeyVisitor& visitor) {
  if (!mayHaveKeys(term)) return;
  const bool differ = readKey(term, Umlauts::bare, key);
  if (key.text != term) visitor.key(key.text);
  forEachPart(key, visitor.part);
  if (!differ) return;
  readKey(term, Umlauts::digraph, key);
  visitor.key(key.text);
  forEachPart(key, visitor.part);
}

std::uint32_t rankOfCount(std::uint32_t count) {
  if (count < 8) return count;
  const auto width = static_cast<std::uint32_t>(std::bit_width(count));
  return (width - 3) * 8 + (count >> (width - 4) & 7);
}

JoinedTermTable::JoinedTermTable(const LazyBytes& section, std::uint32_t textGroups,
                                 std::uint32_t titleGroups) {
  LazyReader reader(section);
  const LazyBytes common = reader.text();
  if (!reader.ok()) return;
  _common = common;
  _filters = reader.rest();
  _textGroups = textGroups;
  _titleGroups = titleGroups;
}

JoinedTermTable::Groups JoinedTermTable::groupsWith(std::uint64_t hash) const {
  Groups found;
  ByteReader reader(_filters.all());
  for (std::uint32_t group = 0; group < _textGroups && reader.ok(); ++group) {
    if (mayHold(reader.text(), hash)) found.ofTexts.push_back(group);
  }
  for (std::uint32_t group = 0; group < _titleGroups && reader.ok(); ++group) {
    if (mayHold(reader.text(), hash)) found.ofTitles.push_back(group);
  }
  return found;
}

JoinedTermTable::Groups JoinedTermTable::withKey(std::string_view key) const {
  return groupsWith(hashOfKey(key));
}

JoinedTermTable::Groups JoinedTermTable::withPart(std::string_view part) const {
  return groupsWith(hashOfPart(part));
}

std::optional<std::vector<std::uint32_t>> JoinedTermTable::common(std::string_view part) const {
  constexpr std::size_t entrySize = 8 + 4 * mostTerms;
  const std::uint64_t hash = hashOfPart(part);
  for (std::size_t at = 0; at + entrySize <= _common.size(); at += entrySize) {
    if (ByteReader(_common.part(at, 8)).u64() != hash) continue;
    std::vector<std::uint32_t> terms;
    for (ByteReader reader(_common.part(at + 8, 4 * mostTerms)); !reader.rest().empty();)
      terms.push_back(reader.u32());
    return terms;
  }
  return std::nullopt;
}

std::string encodeJoinedTerms(const TermDictionary& texts, const TermDictionary& titles) {
  Collector collector(texts.groupCount() + titles.groupCount());
  // Both are in byte order.
  TermDictionary::Cursor title(titles, 0);
  bool more = title.next();
  const auto addTitle = [&] {
    collector.add(title.term(), texts.groupCount() + title.id() / termsPerGroup,
                  texts.size() + title.id(), title.entry().documentCount);
  };
  for (TermDictionary::Cursor text(texts, 0); text.next();) {
    for (; more && title.term() <= text.term(); more = title.next()) {
      if (title.term() < text.term()) addTitle();
    }
    collector.add(text.term(), text.id() / termsPerGroup, text.id(), text.entry().documentCount);
  }
  for (; more; more = title.next())
    addTitle();
  return collector.take();
}

}  // namespace quorvex
