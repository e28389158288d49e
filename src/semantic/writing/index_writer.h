#pragma once

#include <string>
#include <vector>

#include "semantic/format/article_record.h"
#include "semantic/writing/term_matrix.h"
#include "semantic/writing/truncated_svd.h"

namespace quorvex::docuvault {

/// The bytes of an index without attributes (index_format.h). `records`, the matrix's rows and the
/// reduced rows are one each for an article, in the same order.
std::string writeIndex(const std::string& language, const std::vector<ArticleRecord>& records,
                       const TermMatrix& terms, const ReducedRows& reduced);

}  // namespace quorvex::docuvault
