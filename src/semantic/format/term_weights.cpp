#include "semantic/format/term_weights.h"

#include <cmath>

namespace quorvex::docuvault {

const std::array<float, 16>& localWeights() {
  static const std::array<float, 16> weights = [] {
    std::array<float, 16> result{};
    for (std::size_t code = 0; code < result.size(); ++code) {
      result[code] = static_cast<float>(std::log(1.0 + countOfCode[code]));
    }
    return result;
  }();
  return weights;
}

}  // namespace quorvex::docuvault
