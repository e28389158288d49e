#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "common/bytes.h"
#include "common/unicode.h"
#include "fulltext/format/block_table.h"

namespace quorvex {

/// Where a name is defined.
struct NamePlace {
  std::uint32_t document = 0;
  std::uint32_t place = 0;  ///< its number in the document

  friend bool operator==(const NamePlace&, const NamePlace&) = default;
  friend bool operator<(const NamePlace& a, const NamePlace& b) {
    return a.document != b.document ? a.document < b.document : a.place < b.place;
  }
};

/// A defined name and where.
struct NameEntry {
  std::string name;
  std::uint8_t kind = 0;  ///< TSNameKind
  std::vector<NamePlace> places;

  std::string_view qualifier() const { return std::string_view(name).substr(0, lastPart); }
  std::string_view last() const { return std::string_view(name).substr(lastPart); }

  std::size_t lastPart = 0;  ///< its offset
};

/// All defined names by their last parts, case-folded. Numbers and texts are stored apart, which
/// compresses better.
class NameTable {
 public:
  NameTable() = default;
  /// Empty when the section is damaged.
  explicit NameTable(const LazyBytes& section);

  std::uint32_t size() const { return _size; }

  /// Walks the entries in order.
  class Cursor {
   public:
    /// Starts before the first entry. A walk ends at a damaged block, so no bytes are read twice.
    explicit Cursor(const NameTable& table) : _table(table) {}
    /// Moves to the first entry whose folded last part is not less than a folded text; false if
    /// there is none.
    bool seek(std::string_view foldedLast);
    bool next();
    /// Moves to an entry by its number.
    bool moveTo(std::uint32_t number);
    const NameEntry& entry() const { return _entry; }
    /// The last part, case-folded.
    const std::string& folded() const {
      if (_folded.empty()) _folded = caseFolded(_last);
      return _folded;
    }

   private:
    bool startBlock(std::uint64_t number);
    bool read();
    bool fail();

    const NameTable& _table;
    std::uint64_t _nextBlock = 0;
    std::uint32_t _left = 0;  ///< entries in the block
    ByteReader _numbers{{}};
    ByteReader _lastParts{{}};
    ByteReader _qualifiers{{}};
    ByteReader _places{{}};
    std::string _last;
    NameEntry _entry;
    mutable std::string _folded;  ///< empty until asked for
  };

 private:
  std::uint32_t _size = 0;
  BlockTable _blocks;
  LazyBytes _lastParts;
  LazyBytes _qualifiers;
  LazyBytes _places;
};

/// A name at one place, for encodeNames().
struct DefinedName {
  std::string_view name;
  std::uint8_t kind = 0;  ///< TSNameKind
  NamePlace place;

  friend bool operator<(const DefinedName& a, const DefinedName& b) {
    return std::tie(a.name, a.kind, a.place) < std::tie(b.name, b.kind, b.place);
  }
};

/// Makes the section of a NameTable; `names` in any order.
std::string encodeNames(std::vector<DefinedName> names);

}  // namespace quorvex
