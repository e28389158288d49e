#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "common/value.h"
#include "semantic/format/article_record.h"
#include "semantic/writing/stem_analyzer.h"

namespace quorvex::docuvault {

/// Entries of another kind than their key asks for are left out.
ArticleRecord articleRecord(const Dictionary& properties, std::string_view subPath);

/// The terms of an article, each packed with the code of its count (term_weights.h).
std::vector<std::uint32_t> articleTerms(StemAnalyzer& analyzer, const ArticleRecord& record,
                                        const Dictionary& properties);

}  // namespace quorvex::docuvault
