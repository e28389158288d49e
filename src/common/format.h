#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Represents a missing object in formatted text.
inline constexpr std::string_view nullText = "(null)";

/// One format argument. A view of the caller's text, so it must not outlive the call.
class FormatArgument {
 public:
  // NOLINTBEGIN(google-explicit-constructor)
  FormatArgument(std::string_view text) : _text(text) {}
  FormatArgument(const std::string& text) : _text(text) {}
  FormatArgument(const char* text) : _text(text != nullptr ? std::string_view(text) : nullText) {}
  FormatArgument(std::nullopt_t) : _text(nullText) {}
  FormatArgument(const std::optional<std::string>& text) : _text(text ? *text : nullText) {}
  FormatArgument(const Error& error) : _text(error.description) {}
  FormatArgument(std::integral auto number)
      : _number(static_cast<std::int64_t>(number)), _isNumber(true) {}
  // NOLINTEND(google-explicit-constructor)

  void appendTo(std::string& out) const;

 private:
  std::string_view _text;
  std::int64_t _number = 0;
  bool _isNumber = false;
};

/// Fills the placeholders "%@", "%s", "%d", "%hhd" of `format` in order; "%%" is a percent sign.
/// An argument prints by its own type, whatever its placeholder; a placeholder without an argument
/// prints as a missing object.
std::string formatText(std::string_view format, std::initializer_list<FormatArgument> arguments);

}  // namespace quorvex
