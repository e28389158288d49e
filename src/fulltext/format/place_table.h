#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/format/block_table.h"
#include "fulltext/format/index_format.h"
#include "platform/textsift.h"

namespace quorvex {

/// Stands in a stored fragment for the only name that is defined at its place. No fragment contains
/// it.
inline constexpr char nameInFragment = '\0';

/// A place as an index stores it; platform/textsift.h explains the members.
struct IndexPlace {
  std::uint32_t position = 0;  ///< number of occurrence codes before it
  std::uint8_t level = 0;
  /// The heading is the only name that is defined here, and stored as that.
  bool headingIsName = false;
  std::string_view fragment;
  std::string_view heading;

  bool isEndOfList() const { return level > deepestHeading && !headingIsName && heading.empty(); }
};

/// The places of one document with the memory of their fragments.
struct DocumentPlaces {
  std::vector<IndexPlace> places;  ///< ascending
  std::vector<char> fragments;
};

/// The places of all documents. Numbers and texts are stored apart, which compresses better.
class PlaceTable {
 public:
  PlaceTable() = default;
  /// Empty when the section is damaged.
  PlaceTable(const LazyBytes& section, std::uint32_t documentCount);

  /// The result refers to the section. No places on damage.
  DocumentPlaces places(std::uint32_t document) const;
  /// Bytes that places() goes through at most, texts aside.
  std::size_t costOf(std::uint32_t document) const {
    return _blocks.block(document / documentsPerBlock).size();
  }

 private:
  BlockTable _blocks;
  LazyBytes _fragments;
  LazyBytes _headings;
};

/// Makes the section of a PlaceTable.
class PlaceTableBuilder {
 public:
  /// Adds the next document.
  void add(const std::vector<IndexPlace>& places);
  std::string take();

 private:
  std::uint32_t _documents = 0;
  BlockTableBuilder _blocks;
  std::string _fragments;
  std::string _headings;
};

}  // namespace quorvex
