#pragma once

namespace quorvex {

/// Selected by -I: the index forms to build, the file format and the lister.
enum class IndexFormat {
  none = 0,
  lsm = 1,     ///< full-text
  beacon = 2,  ///< searchable items
};

}  // namespace quorvex
