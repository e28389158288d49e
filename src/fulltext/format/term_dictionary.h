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

/// Location of a term's posting list.
struct TermEntry {
  std::uint32_t id = 0;
  std::uint32_t documentCount = 0;
  std::uint64_t firstPosting = 0;    ///< counted over all terms; index into the frequencies
  std::uint64_t postingsOffset = 0;  ///< in the postings section
  std::uint64_t postingsSize = 0;
};

/// Encodes the terms section: terms in byte order with their document counts. `postingDocuments`:
/// the posting lists of all terms, concatenated; they are appended to `postings` as gaps.
std::string encodeTerms(const std::vector<std::string_view>& terms,
                        const std::vector<std::uint32_t>& documentCounts,
                        const std::vector<std::uint32_t>& postingDocuments, std::string& postings);

/// The terms of an index, read in place. Copies are cheap. A damaged block ends at the damage.
class TermDictionary {
 public:
  TermDictionary() = default;
  explicit TermDictionary(std::string_view section);

  std::uint32_t size() const { return _count; }
  /// Null past the end or on damage.
  std::optional<std::string> term(std::uint32_t id) const;
  /// Null when the index lacks the term.
  std::optional<TermEntry> find(std::string_view term) const;

  /// Walks terms in order; faster than calling term() for each.
  class Cursor {
   public:
    /// Starts before the first term of the block that contains `id`.
    Cursor(const TermDictionary& dictionary, std::uint32_t id);
    /// Moves to the first term not less than `term`; false when there is none.
    bool seek(std::string_view term);
    bool next();

    std::uint32_t id() const { return _entry.id; }
    /// Valid until the next call of next().
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
