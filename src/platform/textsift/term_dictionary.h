#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/textsift/block_table.h"

namespace quorvex {

/// Where the postings of a term lie.
struct TermEntry {
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
  /// The term and where its postings are; false past the end or on damage.
  bool get(std::uint32_t id, std::string& term, TermEntry& entry) const;
  /// The first term that is not less than `term`, size() when there is none.
  std::uint32_t lowerBound(std::string_view term) const;
  std::optional<std::uint32_t> find(std::string_view term) const;

  /// Walks terms in order; faster than get() for each.
  class Cursor {
   public:
    /// Before the first term of the block that holds `id`.
    Cursor(const TermDictionary& dictionary, std::uint32_t id);
    bool next();

    std::uint32_t id() const { return _id; }
    const std::string& term() const { return _term; }
    const TermEntry& entry() const { return _entry; }

   private:
    bool startBlock();

    const TermDictionary& _dictionary;
    std::uint32_t _next;
    std::uint32_t _id = 0;
    std::string_view _numbers;
    std::string_view _suffixes;
    std::string _term;
    TermEntry _entry;
  };

 private:
  std::uint32_t _count = 0;
  BlockTable _blocks;
};

}  // namespace quorvex
