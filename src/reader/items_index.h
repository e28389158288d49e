#pragma once

#include "common/value.h"

namespace quorvex::reader {

/// What a search needs from searchable items: a full-text index with one document per item, and the
/// pages of each anchor. Takes seconds for a large book, on all processors.
struct ItemsIndex {
  Data fullText;
  Dictionary anchors;  ///< names to arrays of paths
};

/// Skips values that are not searchable items.
ItemsIndex indexItems(const Array& items);

}  // namespace quorvex::reader
