#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "common/value.h"
#include "platform/text_words.h"
#include "semantic/format/article_record.h"
#include "semantic/writing/stem_analyzer.h"

namespace quorvex::docuvault {

/// Ignores properties of the wrong kind.
ArticleRecord articleRecord(const Dictionary& properties, std::string_view subPath);

/// Returns the article's terms, each packed with its count code (term_weights.h). `words`: its
/// content; null: a text in the properties.
std::vector<std::uint32_t> articleTerms(StemAnalyzer& analyzer, const ArticleRecord& record,
                                        const Dictionary& properties,
                                        const TextWords* words = nullptr);

}  // namespace quorvex::docuvault
