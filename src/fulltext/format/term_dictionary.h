#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/format/block_table.h"
#include "text/tokenizer.h"

namespace quorvex {

/// Where the postings of a term lie.
struct TermEntry {
  std::uint32_t id = 0;
  std::uint32_t documentCount = 0;
  std::uint64_t firstPosting = 0;    ///< counted over all terms; its place among the frequencies
  std::uint64_t postingsOffset = 0;  ///< in the section of postings
  std::uint64_t postingsSize = 0;
};

/// Writes terms in byte order, with the number of documents each is in, as a section of terms.
/// `postingDocuments`: the documents of all terms, one term after the other; they are appended to
/// `postings` as gaps.
std::string encodeTerms(const std::vector<std::string_view>& terms,
                        const std::vector<std::uint32_t>& documentCounts,
                        const std::vector<std::uint32_t>& postingDocuments, std::string& postings);

/// The terms of an index, read in place. Copies are cheap. A damaged block ends at the damage.
class TermDictionary {
 public:
  TermDictionary() = default;
  explicit TermDictionary(std::string_view section);

  std::uint32_t size() const { return _count; }
  /// The term; null past the end or on damage.
  std::optional<std::string> term(std::uint32_t id) const;
  /// Null when the index lacks the term.
  std::optional<TermEntry> find(std::string_view term) const;

  /// Walks terms in order; faster than term() for each.
  class Cursor {
   public:
    /// Stands before the first term of the block that holds `id`.
    Cursor(const TermDictionary& dictionary, std::uint32_t id);
    /// Stands on the first term that is not less than `term`; false when there is none.
    bool seek(std::string_view term);
    bool next();

    std::uint32_t id() const { return _entry.id; }
    /// Lives until the next call of next().
    std::string_view term() const { return {_term.data(), _termSize}; }
    const TermEntry& entry() const { return _entry; }

   private:
    bool startBlock();

    const TermDictionary* _dictionary;
    std::uint32_t _next;
    std::string_view _numbers;
    std::string_view _suffixes;
    std::array<char, maximumTermSize> _term;
    std::size_t _termSize = 0;
    TermEntry _entry;
  };

 private:
  std::uint32_t _count = 0;
  BlockTable _blocks;
};

}  // namespace quorvex
