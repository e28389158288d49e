#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fulltext/writing/index_writer.h"

namespace quorvex {

/// Makes the section of the operators that tell texts apart; depends only on documents and
/// operators. Empty when there are none.
std::string makeOperatorSection(const std::vector<PendingDocument>& documents,
                                const std::vector<std::unique_ptr<TextAnalyzer>>& analyzers);

}  // namespace quorvex
