#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/title_index.h"
#include "text/word_key.h"

namespace quorvex::textsearch {

/// Finds terms of texts and titles that are a word written otherwise or that it is a part of, by
/// the keys of text/word_key.h. Terms that nobody would look for in another way take no space, the
/// others eight bytes per key and part. Immutable; `index` and `titles` must outlive it.
class TermKeys {
 public:
  /// A term and the byte range of a part in it.
  struct JoinedTerm {
    std::string term;
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  /// Of more terms with the same key, those in the most documents are found, judged by the first
  /// four bits of their number.
  static constexpr std::size_t mostTerms = 64;

  TermKeys(const IndexReader& index, const TitleIndex& titles);

  /// Returns the terms that share a key with the word, without the word itself, in byte order.
  std::vector<std::string> likeWord(std::string_view word) const;
  /// Returns the joined terms of which this is, by its key, a part of at least two characters or
  /// all behind a separator of names ("path.join" in "os.path.join"), those in the most documents
  /// first, at most `mostTerms`.
  std::vector<JoinedTerm> withPart(std::string_view part) const;

 private:
  /// Terms by the hashes of texts, in a hash table that is filled once.
  class Table {
   public:
    void add(std::string_view text, std::uint32_t term, std::uint32_t documentCount);
    void finish();

    /// Returns the terms that may have been added with this text, those in the most documents
    /// first.
    std::vector<std::uint32_t> find(std::string_view text) const;

   private:
    struct Entry {
      std::uint32_t hashAndRank;  ///< 24 bits of the hash, 8 of the rank of the document count
      std::uint32_t term;
    };

    std::size_t bucketOf(std::uint32_t hashAndRank) const {
      return hashAndRank >> 8U & (_begins.size() - 2);
    }

    std::vector<Entry> _drafts;          ///< until finish()
    std::vector<std::uint32_t> _begins;  ///< of each bucket, and the end; their number a power of 2
    std::vector<Entry> _entries;
  };

  /// `key`: for reuse.
  void add(std::string_view term, std::uint32_t number, std::uint32_t documentCount, WordKey& key);
  void addParts(const WordKey& key, std::uint32_t number, std::uint32_t documentCount);
  /// Empty for a number beyond those of the terms.
  std::string term(std::uint32_t number) const;
  bool hasTerm(std::string_view term) const;

  const IndexReader& _index;
  const TitleIndex& _titles;
  // The terms of texts are numbered as they are in the index, behind them those of titles.
  Table _byKey;
  Table _byPart;
};

}  // namespace quorvex::textsearch
