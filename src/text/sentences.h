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

/// The paragraphs of a text, white space collapsed to single spaces, always UTF-8. One ends at each
/// of `starts`, which are offsets in ascending order, and at a paragraph separator; line breaks
/// only wrap lines.
std::vector<std::string> paragraphsOf(std::string_view text, std::span<const std::size_t> starts);

/// Cuts paragraphs into sentences (UAX #29, ICU's root rules), blanks at their ends taken off. None
/// ends with an abbreviation that leads to what follows, in any of the languages that are known.
class SentenceSplitter {
 public:
  SentenceSplitter();
  ~SentenceSplitter();
  SentenceSplitter(const SentenceSplitter&) = delete;
  SentenceSplitter& operator=(const SentenceSplitter&) = delete;

  /// `paragraph` is UTF-8, shorter than 2 GiB, and outlives the calls of next().
  void reset(std::string_view paragraph);
  bool next(std::string_view& sentence);

 private:
  bool goesOn(std::string_view sentence) const;

  std::unique_ptr<icu::BreakIterator> _iterator;
  UText _iteratorText = UTEXT_INITIALIZER;
  std::string_view _paragraph;
  std::size_t _end = 0;  ///< of the last sentence
};

/// The first words of a text, at most `most` characters; the first characters of a word that is
/// longer.
std::string_view firstWords(std::string_view text, std::size_t most);

/// Whether a sentence ends with a mark that ends sentences, closing quotes and brackets aside.
bool endsLikeSentence(std::string_view sentence);

/// The characters that set off the parts of crumbs and menus.
std::size_t separatorCount(std::string_view sentence);

}  // namespace quorvex
