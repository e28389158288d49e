#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace quorvex {

/// Cuts runs of Chinese and Japanese characters into words. Looking words up in ICU's dictionary is
/// half of the work on a Japanese book, and a book repeats its short runs between other characters
/// again and again. So this remembers those it has cut, as many as fit.
class IdeographRuns {
 public:
  static constexpr std::size_t characterSize = 3;
  static constexpr std::size_t mostCharacters = 64;

  IdeographRuns() = default;
  ~IdeographRuns() { utext_close(&_text); }
  IdeographRuns(const IdeographRuns&) = delete;
  IdeographRuns& operator=(const IdeographRuns&) = delete;

  /// Returns in which characters words end, as bits from the lowest. `run`: UTF-8, up to
  /// `mostCharacters` characters of `characterSize` bytes. Sets the iterator to another text.
  std::uint64_t wordEnds(std::string_view run, icu::BreakIterator& iterator);

 private:
  struct Entry {
    std::string run;
    std::uint64_t wordEnds = 0;
  };

  std::uint64_t cut(std::string_view run, icu::BreakIterator& iterator);

  /// By the hash of the run; a later run takes the place of an earlier one.
  std::vector<Entry> _entries;
  UText _text = UTEXT_INITIALIZER;
};

}  // namespace quorvex
