#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// The terms of texts and titles by their stems, eight bytes per term. Building it stems every
/// term, which takes up to a microsecond each. Immutable.
class StemTable {
 public:
  StemTable(const IndexReader& index, const TitleIndex& titles, Stemmer& stemmer);

  /// Calls visit(term) for the terms of texts that may have this stem, ascending.
  template <typename Visit>
  void forEachInTexts(std::string_view stem, Visit visit) const {
    forEach(_inTexts, stem, visit);
  }
  template <typename Visit>
  void forEachInTitles(std::string_view stem, Visit visit) const {
    forEach(_inTitles, stem, visit);
  }

 private:
  struct Entry {
    std::uint32_t hash;  ///< of the stem
    std::uint32_t term;
  };
  using Entries = std::vector<Entry>;

  static std::uint32_t hashOf(std::string_view stem);

  template <typename Visit>
  static void forEach(const Entries& entries, std::string_view stem, Visit& visit) {
    const std::uint32_t hash = hashOf(stem);
    for (auto entry = std::ranges::lower_bound(entries, hash, {}, &Entry::hash);
         entry != entries.end() && entry->hash == hash; ++entry) {
      visit(entry->term);
    }
  }

  Entries _inTexts;
  Entries _inTitles;
};

}  // namespace quorvex::textsearch
