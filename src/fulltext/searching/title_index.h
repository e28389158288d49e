#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"

namespace quorvex::textsearch {

/// The titles of an index and their words. Immutable; the index must outlive it.
class TitleIndex {
 public:
  using Posting = TitleTable::Posting;
  static constexpr std::uint32_t gap = TitleTable::gap;

  explicit TitleIndex(const IndexReader& index) : _index(index), _table(index.titles()) {}

  /// Returns the part of a document's title that tells it from others; empty if it has no title.
  std::string_view title(std::uint32_t document) const {
    return _table.shared().cut(_index.property(document, titleProperty));
  }
  const TitleAffix& shared() const { return _table.shared(); }

  /// In byte order.
  const TermDictionary& terms() const { return _table.terms(); }
  /// Returns the number of a term; null if no title has it.
  std::optional<std::uint32_t> find(std::string_view term) const;
  /// Empty past the end.
  std::string term(std::uint32_t number) const { return terms().term(number).value_or(""); }
  /// The number of titles with a term.
  std::size_t titleCount(std::uint32_t term) const;
  /// Ascending by document.
  std::vector<Posting> postings(std::uint32_t term) const;
  /// The words of a title in order, as term numbers and gaps.
  std::vector<std::uint32_t> words(std::uint32_t document) const { return _table.words(document); }
  std::uint32_t length(std::uint32_t document) const { return _table.length(document); }
  float averageLength() const { return _table.averageLength(); }

 private:
  std::optional<TermEntry> entry(std::uint32_t term) const;

  const IndexReader& _index;
  const TitleTable& _table;
};

}  // namespace quorvex::textsearch
