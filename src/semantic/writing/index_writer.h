#pragma once

#include <string>
#include <vector>

#include "semantic/format/article_record.h"
#include "semantic/writing/term_matrix.h"
#include "semantic/writing/truncated_svd.h"

namespace quorvex::docuvault {

/// Returns an index without attributes (index_format.h), empty if too large for the format.
/// `records`, matrix rows and reduced rows correspond, one per article.
std::string writeIndex(const std::string& language, const std::vector<ArticleRecord>& records,
                       const TermMatrix& terms, const ReducedRows& reduced);

}  // namespace quorvex::docuvault
