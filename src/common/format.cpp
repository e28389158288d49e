#include "common/format.h"

#include <array>

namespace quorvex {

void FormatArgument::appendTo(std::string& out) const {
  if (_isNumber) {
    out += std::to_string(_number);
  } else {
    out += _text;
  }
}

std::string formatText(std::string_view format, std::initializer_list<FormatArgument> arguments) {
  static constexpr std::array<std::string_view, 4> placeholders = {"%@", "%s", "%d", "%hhd"};
  std::string out;
  const FormatArgument* next = arguments.begin();
  while (!format.empty()) {
    const std::size_t percent = std::min(format.find('%'), format.size());
    out += format.substr(0, percent);
    format.remove_prefix(percent);
    if (format.empty()) break;

    std::string_view found;
    for (const std::string_view placeholder : placeholders) {
      if (format.starts_with(placeholder)) found = placeholder;
    }
    if (found.empty()) {
      out += '%';
      format.remove_prefix(format.starts_with("%%") ? 2 : 1);
    } else {
      if (next != arguments.end()) {
        (next++)->appendTo(out);
      } else {
        out += nullText;
      }
      format.remove_prefix(found.size());
    }
  }
  return out;
}

}  // namespace quorvex
