#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "semantic/format/index_format.h"
#include "text/term_dictionary.h"

namespace quorvex::docuvault {

/// Makes the sections of terms, postings and counts. Terms come in byte order; after each, the
/// postings that it has, by ascending article.
class TermSectionsBuilder {
 public:
  void startTerm(std::string_view term, std::uint8_t globalWeight);
  void addPosting(std::uint32_t article, std::uint32_t countCode);

  std::uint32_t termCount() const { return _termCount; }
  std::uint64_t postingCount() const { return _postingCount; }
  /// Moves the sections to `sections`.
  void take(IndexSections& sections);

 private:
  void finishTerm();

  TermDictionaryBuilder _terms{true};
  std::string _postings;
  std::string _counts;
  std::uint32_t _termCount = 0;
  std::uint64_t _postingCount = 0;
  // The last term.
  std::string _term;
  std::uint8_t _globalWeight = 0;
  std::uint32_t _articles = 0;
  std::uint32_t _nextArticle = 0;
  std::size_t _postingsBegin = 0;
};

}  // namespace quorvex::docuvault
