#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/lazy_bytes.h"
#include "text/tokenizer.h"

// The terms of an index in byte order, front-coded (Witten, Moffat, Bell: Managing Gigabytes, 1999,
// section 4.1) in groups, and where their posting lists lie. Only the directory of the groups is
// read when a dictionary is opened.
//
//   dictionary = count:varint extras:u8 size:varint directory *group
//                ; extras: 1 if each term has a byte of its own, else 0; size: of the directory
//   directory  = *(shared:varint suffix:text size:varint postings:varint postingBytes:varint)
//                ; per group its first term, after the one before; bytes of the group; number and
//                ; bytes of its postings
//   group      = size:varint *(shared:varint suffixSize:varint documents:varint extra:varint)
//                [*u8] *suffix
//                ; size: bytes of the numbers; a term's postings take documents + extra bytes; the
//                ; first term shares all of itself with the directory

namespace quorvex {

/// Location of a term's posting list.
struct TermEntry {
  std::uint32_t id = 0;
  std::uint32_t documentCount = 0;
  std::uint64_t firstPosting = 0;    ///< counted over all terms; index into the frequencies
  std::uint64_t postingsOffset = 0;  ///< in the postings section
  std::uint64_t postingsSize = 0;
  std::uint8_t extra = 0;  ///< the term's byte, in a dictionary that has them
};

inline constexpr std::uint32_t termsPerGroup = 128;

/// Makes the bytes of a TermDictionary from terms in byte order, each of 1 to maximumTermSize
/// bytes.
class TermDictionaryBuilder {
 public:
  explicit TermDictionaryBuilder(bool hasExtras) : _hasExtras(hasExtras) {}

  /// `postingsSize`: at least `documentCount`.
  void add(std::string_view term, std::uint32_t documentCount, std::uint64_t postingsSize,
           std::uint8_t extra = 0);
  std::string take();

 private:
  void finishGroup();

  bool _hasExtras;
  std::uint32_t _count = 0;
  std::string _directory;
  std::string _groups;
  std::string _firstTerm;  ///< of the last group
  // The group that is being made.
  std::string _previous;
  std::string _numbers;
  std::string _extras;
  std::string _suffixes;
  std::uint64_t _postings = 0;
  std::uint64_t _postingBytes = 0;
};

/// The terms of an index, read in place. Copies are cheap. A damaged group ends at the damage.
class TermDictionary {
 public:
  TermDictionary() = default;
  /// Empty when the directory is damaged.
  explicit TermDictionary(const LazyBytes& section);

  std::uint32_t size() const { return _directory == nullptr ? 0 : _directory->count; }
  std::uint32_t groupCount() const { return (size() + termsPerGroup - 1) / termsPerGroup; }
  /// Returns the first term of a group without unpacking the group.
  std::string_view firstTerm(std::uint32_t group) const;
  /// Null past the end or on damage.
  std::optional<std::string> term(std::uint32_t id) const;
  /// Null when the index lacks the term.
  std::optional<TermEntry> find(std::string_view term) const;

  /// Walks terms in order; faster than calling term() for each.
  class Cursor {
   public:
    /// Starts before the first term of the group that contains `id`.
    Cursor(const TermDictionary& dictionary, std::uint32_t id);
    /// Moves to the first term not less than `term`; false when there is none.
    bool seek(std::string_view term);
    bool next();

    std::uint32_t id() const { return _entry.id; }
    /// Valid until the next call of next().
    std::string_view term() const { return {_term.data(), _termSize}; }
    const TermEntry& entry() const { return _entry; }

   private:
    bool startGroup();
    bool fail();

    const TermDictionary* _dictionary;
    std::uint32_t _next;
    std::string_view _numbers;
    std::string_view _extras;
    std::string_view _suffixes;
    std::array<char, maximumTermSize> _term;
    std::size_t _termSize = 0;
    std::uint64_t _postingsEnd = 0;
    std::uint64_t _bytesEnd = 0;
    TermEntry _entry;
  };

 private:
  /// Where a group and its postings begin; the last one is the end of all.
  struct Group {
    std::uint64_t offset = 0;
    std::uint64_t firstPosting = 0;
    std::uint64_t postingsOffset = 0;
    std::uint64_t termEnd = 0;  ///< of its first term in Directory::terms
  };
  struct Directory {
    std::uint32_t count = 0;
    bool hasExtras = false;
    std::string terms;
    std::vector<Group> groups;
    LazyBytes content;  ///< of the groups
  };

  bool read(const LazyBytes& section, Directory& directory) const;
  /// The group that would have a term.
  std::uint32_t groupOf(std::string_view term) const;

  std::shared_ptr<const Directory> _directory;
};

}  // namespace quorvex
