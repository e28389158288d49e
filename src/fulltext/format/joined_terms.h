#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/lazy_bytes.h"
#include "text/term_dictionary.h"
#include "text/word_key.h"

namespace quorvex {

/// Visits a text by which a term is found and, unless it is the key of the whole term, the byte
/// range of the part in the term.
struct KeyVisitor {
  std::function<void(std::string_view key)> key;
  std::function<void(std::string_view text, std::size_t begin, std::size_t end)> part;
};

/// Calls the visitor for the keys (text/word_key.h) of a term that are not the term itself, and
/// for the texts of its parts: what stands between joints, the words of that which digits end, and
/// all behind a separator of names. Terms that nobody would look for in another way have none.
/// `key`: for reuse.
void visitKeys(std::string_view term, WordKey& key, const KeyVisitor& visitor);
/// Whether visitKeys() may call the visitor at all; much faster.
bool mayHaveKeys(std::string_view term);

/// Tells which groups of the dictionaries hold terms with a key or a part, by a Bloom filter (Bloom
/// 1970) for each group, and which terms do if they are many.
class JoinedTermTable {
 public:
  /// Of more terms with the same part, those in the most documents are known, judged by the first
  /// four bits of their number.
  static constexpr std::size_t mostTerms = 64;

  JoinedTermTable() = default;
  /// Empty when the section is damaged. Group counts: of the terms of texts, and of titles.
  JoinedTermTable(const LazyBytes& section, std::uint32_t textGroups, std::uint32_t titleGroups);

  struct Groups {
    std::vector<std::uint32_t> ofTexts;
    std::vector<std::uint32_t> ofTitles;
  };
  /// Returns the groups that may hold terms with a key.
  Groups withKey(std::string_view key) const;
  /// The same for a part, unless common() knows it.
  Groups withPart(std::string_view part) const;
  /// Returns the terms with a part that many terms have, best first: numbers of terms of texts,
  /// and behind them of titles. Null for other parts.
  std::optional<std::vector<std::uint32_t>> common(std::string_view part) const;

 private:
  Groups groupsWith(std::uint64_t hash) const;

  LazyBytes _common;
  LazyBytes _filters;
  std::uint32_t _textGroups = 0;
  std::uint32_t _titleGroups = 0;
};

/// A rank of document counts in eight bits, order-preserving: exact below 16, then with three bits
/// behind the first.
std::uint32_t rankOfCount(std::uint32_t count);

/// Makes the section of a JoinedTermTable.
std::string encodeJoinedTerms(const TermDictionary& texts, const TermDictionary& titles);

}  // namespace quorvex
