#pragma once

namespace quorvex {

/// What -I selects: the index forms that are made, the form of the file and the lister.
enum class IndexFormat {
  none = 0,
  lsm = 1,     ///< full-text
  beacon = 2,  ///< searchable items
};

}  // namespace quorvex
