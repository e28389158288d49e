#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace quorvex {

/// Returns the paragraphs of a text, white space collapsed to single spaces, always UTF-8. A
/// paragraph ends at each of `starts`, which are ascending offsets, and at a paragraph separator;
/// line breaks only wrap lines.
std::vector<std::string> paragraphsOf(std::string_view text, std::span<const std::size_t> starts);

/// Splits paragraphs into trimmed sentences (UAX #29, ICU's root rules). No sentence ends with an
/// abbreviation that introduces the next word, in any of the known languages.
class SentenceSplitter {
 public:
  SentenceSplitter();
  ~SentenceSplitter();
  SentenceSplitter(const SentenceSplitter&) = delete;
  SentenceSplitter& operator=(const SentenceSplitter&) = delete;

  /// `paragraph` must be UTF-8, shorter than 2 GiB, and outlive the calls of next().
  void reset(std::string_view paragraph);
  bool next(std::string_view& sentence);

 private:
  bool goesOn(std::string_view sentence) const;

  std::unique_ptr<icu::BreakIterator> _iterator;
  UText _iteratorText = UTEXT_INITIALIZER;
  std::string_view _paragraph;
  std::size_t _end = 0;  ///< of the last sentence
};

/// Returns the first words of a text, at most `most` characters; cuts the first word if it is
/// longer.
std::string_view firstWords(std::string_view text, std::size_t most);

/// Whether a sentence ends with a sentence-ending mark, ignoring closing quotes and brackets.
bool endsLikeSentence(std::string_view sentence);

/// Counts the characters that separate the parts of breadcrumbs and menus.
std::size_t separatorCount(std::string_view sentence);

}  // namespace quorvex
