#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace quorvex {

/// The blocks of a page's text, white space collapsed to single spaces, always UTF-8. Text nodes
/// are joined by spaces, so a line break between blanks, or two line breaks, end a block, and a
/// line break inside a wrapped paragraph does not.
std::vector<std::string> paragraphsOf(std::string_view text);

/// Cuts paragraphs into sentences (UAX #29, ICU's root rules), blanks at their ends taken off.
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
  std::unique_ptr<icu::BreakIterator> _iterator;
  UText _iteratorText = UTEXT_INITIALIZER;
  std::string_view _paragraph;
};

/// Whether a sentence ends with a mark that ends sentences, closing quotes and brackets aside.
bool endsLikeSentence(std::string_view sentence);

/// The characters that set off the parts of crumbs and menus.
std::size_t separatorCount(std::string_view sentence);

}  // namespace quorvex
