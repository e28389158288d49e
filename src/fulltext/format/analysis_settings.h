#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex {

/// Settings for turning texts into terms.
struct AnalysisSettings {
  std::uint64_t minimumTermLength = 0;  ///< code points
  std::string termCharacters;
  std::vector<std::string> stopWords;  ///< case-folded
};

}  // namespace quorvex
