#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/lazy_bytes.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/title_affix.h"
#include "fulltext/format/word_filter.h"
#include "text/term_dictionary.h"
#include "text/tokenizer.h"

namespace quorvex {

/// The inverted index of all titles. Titles are properties, which no posting list of the texts
/// covers. Leaves out what all titles share, and the titles of documents without text: their
/// authors kept them out of the search.
class TitleTable {
 public:
  struct Posting {
    std::uint32_t document;
    std::uint32_t count;
  };
  /// Stands for title words that the index leaves out.
  static constexpr std::uint32_t gap = UINT32_MAX;

  TitleTable() = default;
  /// Empty when the section is damaged.
  TitleTable(const LazyBytes& section, std::uint32_t documentCount);

  const TitleAffix& shared() const { return _shared; }
  /// The document count of a term is the number of titles with it.
  const TermDictionary& terms() const { return _terms; }
  /// Ascending by document.
  std::vector<Posting> postings(const TermEntry& term) const;
  /// Returns the words of a title in order, as term numbers and gaps.
  std::vector<std::uint32_t> words(std::uint32_t document) const;
  /// The number of words and gaps of a title.
  std::uint32_t length(std::uint32_t document) const {
    return document < _lengths.size() ? _lengths[document] : 0;
  }
  float averageLength() const { return _averageLength; }

 private:
  TitleAffix _shared;
  TermDictionary _terms;
  LazyBytes _postings;
  std::vector<std::uint32_t> _lengths;
  BlockTable _words;
  float _averageLength = 0;
};

/// Makes the section of a TitleTable. `titles`: of each document, empty if it has no text.
std::string encodeTitles(std::span<const std::string_view> titles, const WordFilter& filter,
                         Tokenizer& tokenizer);

}  // namespace quorvex
