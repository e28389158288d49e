#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvex {

/// Longer runs of signs are drawings or encoded data.
inline constexpr std::size_t maximumOperatorSize = 8;

enum class OperatorByte : std::uint8_t {
  other,
  sign,      ///< may be an operator by itself
  notAlone,  ///< only with another sign or bracket behind it
  closing,
};
inline constexpr std::array<OperatorByte, 256> operatorBytes = [] {
  std::array<OperatorByte, 256> bytes{};
  const auto set = [&bytes](std::string_view characters, OperatorByte kind) {
    for (const char c : characters)
      bytes[static_cast<unsigned char>(c)] = kind;
  };
  set(R"(!#$%&*+<=>?@\^|~)", OperatorByte::sign);
  set(".:/-([", OperatorByte::notAlone);
  set(")]", OperatorByte::closing);
  return bytes;
}();
constexpr OperatorByte operatorByte(char c) {
  return operatorBytes[static_cast<unsigned char>(c)];
}

/// A quick test that rules out most text.
constexpr bool mayBeginOperator(std::string_view text, std::size_t position) {
  const OperatorByte first = operatorByte(text[position]);
  if (first == OperatorByte::other) return false;
  return first == OperatorByte::sign ||
         (first == OperatorByte::notAlone && position + 1 < text.size() &&
          operatorByte(text[position + 1]) != OperatorByte::other);
}

/// Finds the next operator of program code, such as "->>" or "?", that begins in a text from
/// `position` up to `end`; moves past it. Empty when there is none. An operator is a run of ASCII
/// signs, without brackets, quotation marks and list separators; what punctuates prose, joins words
/// or draws lines is none. "[]" and "()" are operators right behind the word "operator".
///
/// `end` must not cut a run.
std::string_view nextOperator(std::string_view text, std::size_t& position, std::size_t end);

}  // namespace quorvex
