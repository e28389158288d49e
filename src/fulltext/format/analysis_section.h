#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/value.h"

namespace quorvex {

/// What an index keeps about how it was made.
struct IndexDescription {
  std::optional<std::string> name;
  Dictionary analysisProperties;
};

/// Null when a property is neither string nor integer nor an array of these.
std::optional<std::string> encodeAnalysis(const IndexDescription& description);
/// What can be read of it.
IndexDescription decodeAnalysis(std::string_view section);

}  // namespace quorvex
