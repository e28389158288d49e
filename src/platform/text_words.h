#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace quorvex {

/// The words of a text as one index cuts them, for another index over the same text: cutting costs
/// more than all that is done with the words. Valid until the analysis goes on.
struct TextWords {
  /// One for each plain word. A number stands for the same term in all texts of an analysis.
  std::span<const std::uint32_t> numbers;
  std::function<std::string_view(std::uint32_t number)> termOf;  ///< case-folded
  /// The terms of all other words, those that the index joins, shortens or leaves out, as they are
  /// without its settings; a line feed follows each.
  std::string_view others;
};

}  // namespace quorvex
