#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/ranking.h"
#include "fulltext/searching/title_index.h"
#include "fulltext/searching/word_lookup.h"
#include "fulltext/searching/word_terms.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// Marks the documents that have any of the terms in text or title. `mask`: of each document.
void markDocuments(const IndexReader& index, const TitleIndex& titles, const WordTerms& terms,
                   DocumentMask& mask);

/// Tells which documents a query admits: those with each of its phrases and without its excluded
/// words. Thread-safe.
class DocumentFilter {
 public:
  /// All must outlive this object.
  DocumentFilter(const IndexReader& index, const TitleIndex& titles, const WordLookup& lookup)
      : _index(index), _titles(titles), _lookup(lookup) {}

  /// Empty: all are admitted. `language`: that of the stemmer.
  DocumentMask allowed(const Query& query, std::string_view language, Stemmer& stemmer) const;

 private:
  DocumentMask holding(const QueryClause& clause, std::string_view language,
                       Stemmer& stemmer) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  const WordLookup& _lookup;
};

}  // namespace quorvex::textsearch
