#pragma once

#include "common/value.h"

namespace quorvex::reader {

/// What a search needs of searchable items: a full-text index with one document an item, and the
/// pages of each anchor. Takes seconds for a large book, on all processors.
struct ItemsIndex {
  Data fullText;
  Dictionary anchors;  ///< names to arrays of paths
};

/// Values that are no searchable items are passed over.
ItemsIndex indexItems(const Array& items);

}  // namespace quorvex::reader
