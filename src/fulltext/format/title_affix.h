#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// What most titles of a book end or begin with, such as its name behind a dash or in parentheses.
/// It tells no page from another.
class TitleAffix {
 public:
  TitleAffix() = default;
  /// At least five titles, and 60 % of all that are not empty, must share it.
  explicit TitleAffix(std::span<const std::string_view> titles);

  /// Returns the part of a title that tells the page: the whole title if it lacks the shared part
  /// or has nothing else.
  std::string_view cut(std::string_view title) const;

  /// Returns the shared part without separators and brackets; empty if there is none.
  const std::string& name() const { return _name; }

  /// The affixes as bytes: count:varint *(text:text name:text) of the endings, the same of the
  /// beginnings, name:text.
  std::string encode() const;
  /// Null when the bytes are not what encode() returns.
  static std::optional<TitleAffix> decode(std::string_view bytes);

 private:
  struct Part {
    std::string text;
    std::string name;  ///< the text without separators and brackets
  };
  template <typename Side>
  static std::string_view without(std::string_view title, const std::vector<Part>& parts);

  /// Longest first: a title that lacks the longest may have a shorter one.
  std::vector<Part> _endings;
  std::vector<Part> _beginnings;
  std::string _name;
};

}  // namespace quorvex
