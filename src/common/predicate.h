#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "common/result.h"

namespace quorvex {

/// A filter for subpaths: matches a regular expression (ICU's dialect) against the whole text,
/// ignoring case. An invalid pattern still makes a predicate, which fails when evaluated. Copies
/// share their pattern.
class Predicate {
 public:
  // These two patterns need no library.
  static constexpr std::string_view anyText = ".*";
  static constexpr std::string_view pageNames = R"(.*\.html?$)";

  /// Fails on a pattern that is not UTF-8.
  static Result<Predicate> matching(std::string_view pattern);

  /// Fails on a bad pattern, and if the match exceeds its limits (time steps, backtracking stack).
  /// Not thread-safe on one predicate or its copies.
  Result<bool> evaluate(std::string_view text) const;

 private:
  struct Matcher;
  explicit Predicate(std::shared_ptr<Matcher> matcher) : _matcher(std::move(matcher)) {}

  std::shared_ptr<Matcher> _matcher;
};

}  // namespace quorvex
