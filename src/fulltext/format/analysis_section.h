#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/value.h"

namespace quorvex {

/// The stored description of how an index was made.
struct IndexDescription {
  std::optional<std::string> name;
  Dictionary analysisProperties;
};

/// Null when a property is of a kind that cannot be encoded.
std::optional<std::string> encodeAnalysis(const IndexDescription& description);
/// Returns as much as can be read.
IndexDescription decodeAnalysis(std::string_view section);

}  // namespace quorvex
