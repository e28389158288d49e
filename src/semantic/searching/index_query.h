#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "semantic/reading/index_reader.h"

namespace quorvex::docuvault {

/// An article and the cosine of the angle between it and the query.
struct NearArticle {
  std::uint32_t article = 0;
  double similarity = 0;
};

/// A query's stemmed terms with their counts.
using QueryTerms = std::vector<std::pair<std::string, std::uint32_t>>;

std::vector<NearArticle> nearestToTerms(const SemanticIndexReader& index, const QueryTerms& terms,
                                        std::size_t count);
/// Returns none for an unknown sub-path; uses the first of several articles that share it.
std::vector<NearArticle> nearestToArticle(const SemanticIndexReader& index,
                                          std::string_view subPath, std::size_t count);

}  // namespace quorvex::docuvault
