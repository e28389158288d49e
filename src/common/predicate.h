#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "common/result.h"

namespace quorvex {

/// A filter over subpaths: a case-insensitive match of a regular expression (ICU's dialect) against
/// the whole text. A pattern that is no regular expression makes a predicate all the same; it fails
/// when it is evaluated. Copies share their pattern.
class Predicate {
 public:
  /// "SELF matches[c] %@" with the pattern. Fails on a pattern that is not UTF-8.
  static Result<Predicate> matching(std::string_view pattern);

  const std::string& pattern() const;

  /// Fails on a bad pattern, and on a text for which the match runs past its limits (time steps,
  /// backtracking stack). Not safe from several threads on one predicate or its copies.
  Result<bool> evaluate(std::string_view text) const;

 private:
  struct Matcher;
  explicit Predicate(std::shared_ptr<Matcher> matcher) : _matcher(std::move(matcher)) {}

  std::shared_ptr<Matcher> _matcher;
};

}  // namespace quorvex
