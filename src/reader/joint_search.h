#pragma once

#include <span>
#include <string_view>

#include "common/result.h"
#include "reader/answers.h"
#include "reader/open_index.h"

namespace quorvex::reader {

struct IndexAndBook {
  const OpenIndex* index;
  const PageTexts* texts;  ///< for snippets; may be null
};

/// Answers a query from several indexes. Fails if one of them lacks the requested ranking; the
/// error says which, counted from 1.
///
/// Words are weighed by all books together, so scores by words can be compared. A book's joint
/// scores count as much as the score of its best page by words: similarity of meaning is relative
/// to a book, and in a small one every page is near to any query.
Result<quorvex_result> searchTogether(std::span<const IndexAndBook> indexes, std::string_view query,
                                      const quorvex_options& options);

}  // namespace quorvex::reader
