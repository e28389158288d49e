#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/title_affix.h"
#include "text/term_table.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// The inverted index of all titles. An index stores titles as properties, which no posting list
/// covers, so they are inverted when an index is first searched: about a microsecond per title,
/// less than reading the titles of one common word's documents. Leaves out what all titles share.
/// Immutable.
class TitleIndex {
 public:
  struct Posting {
    std::uint32_t document;
    std::uint32_t count;
  };
  /// Stands for title words that the index leaves out.
  static constexpr std::uint32_t gap = UINT32_MAX;

  /// `property`: the key of the titles. Does not invert the titles of documents without text: their
  /// authors kept them out of the search. `index` must outlive this object.
  TitleIndex(const IndexReader& index, std::string_view property, const WordFilter& filter,
             Tokenizer& tokenizer);

  /// Returns the part of a document's title that tells it from others; empty if it has no title.
  std::string_view title(std::uint32_t document) const;
  const TitleAffix& shared() const { return _shared; }

  /// In byte order.
  const std::vector<std::string>& terms() const { return _terms; }
  /// Returns the number of a term; null if no title has it.
  std::optional<std::uint32_t> find(std::string_view term) const;
  /// Ascending by document.
  std::span<const Posting> postings(std::uint32_t term) const;
  /// The words of a title in order, as term numbers and gaps.
  std::span<const std::uint32_t> words(std::uint32_t document) const;
  float averageLength() const { return _averageLength; }

 private:
  void numberByOrder(const TermTable& table);
  void invert();

  std::vector<std::string_view> _titles;  ///< of each document, as they are stored
  TitleAffix _shared;
  std::vector<std::string> _terms;
  std::vector<std::uint32_t> _wordBegins;  ///< of each document, and the end
  std::vector<std::uint32_t> _words;
  std::vector<std::uint32_t> _postingBegins;  ///< of each term, and the end
  std::vector<Posting> _postings;
  float _averageLength = 0;
};

}  // namespace quorvex::textsearch
