#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/docuvault.h"
#include "semantic/reading/index_reader.h"

namespace quorvex::docuvault {

/// A query's terms, stemmed, with their counts.
using QueryTerms = std::vector<std::pair<std::string, std::uint32_t>>;

std::vector<HelpRDXAnswer> nearestToTerms(const SemanticIndexReader& index, const QueryTerms& terms,
                                          std::size_t count);
/// None for an unknown sub-path; of several articles under one, the first is meant.
std::vector<HelpRDXAnswer> nearestToArticle(const SemanticIndexReader& index,
                                            std::string_view subPath, std::size_t count);

}  // namespace quorvex::docuvault
