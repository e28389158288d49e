#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "text/stemmer.h"

namespace quorvex::textsearch {

/// The terms of texts and titles by their stems in one language: eight bytes a term. Making it
/// stems all terms, which takes about a microsecond each. Immutable.
class StemTable {
 public:
  struct Entry {
    std::uint32_t hash;  ///< of the stem
    std::uint32_t term;
    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes what it expands to for a pointer
    friend auto operator<=>(const Entry&, const Entry&) = default;
  };
  using Entries = std::vector<Entry>;

  StemTable(const IndexReader& index, const TitleIndex& titles, Stemmer& stemmer);

  /// Call visit(term) for the terms that may have this stem, ascending.
  template <typename Visit>
  void forEachInTexts(std::string_view stem, Visit visit) const {
    forEach(_inTexts, stem, visit);
  }
  template <typename Visit>
  void forEachInTitles(std::string_view stem, Visit visit) const {
    forEach(_inTitles, stem, visit);
  }

 private:
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

/// The tables of one index, each made when it is first asked for. Safe from several threads.
class StemTables {
 public:
  /// `stemmer`: that of the language.
  const StemTable& of(std::string_view language, const IndexReader& index, const TitleIndex& titles,
                      Stemmer& stemmer) const;

 private:
  mutable std::mutex _mutex;
  mutable std::map<std::string, std::unique_ptr<const StemTable>, std::less<>> _tables;
};

}  // namespace quorvex::textsearch
