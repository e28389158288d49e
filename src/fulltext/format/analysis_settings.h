#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex {

/// How texts become terms.
struct AnalysisSettings {
  std::uint64_t minimumTermLength = 0;  ///< code points
  std::string termCharacters;
  std::vector<std::string> stopWords;  ///< case-folded
};

}  // namespace quorvex
