#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/lazy_bytes.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/name_table.h"
#include "fulltext/format/place_table.h"

namespace quorvex {

/// The name that a place stores as a number in the table of names.
struct NameAtPlace {
  std::uint32_t place = 0;
  std::uint32_t name = 0;
};

/// Which names stand for the texts that places do not store: the way back from a document to the
/// table of names.
class PlaceNames {
 public:
  PlaceNames() = default;
  PlaceNames(const LazyBytes& section, std::uint32_t documentCount);

  /// Ascending by place.
  std::vector<NameAtPlace> of(std::uint32_t document) const;

 private:
  BlockTable _blocks;
};

/// Makes the section of PlaceNames.
std::string encodePlaceNames(const NameTable& names, const PlaceTable& places,
                             std::uint32_t documentCount);

}  // namespace quorvex
