#include "semantic/format/term_sections.h"

#include <utility>

namespace quorvex::docuvault {

void TermSectionsBuilder::startTerm(std::string_view term, std::uint8_t globalWeight) {
  finishTerm();
  _term = term;
  _globalWeight = globalWeight;
  _articles = 0;
  _nextArticle = 0;
  _postingsBegin = _postings.size();
  ++_termCount;
}

void TermSectionsBuilder::addPosting(std::uint32_t article, std::uint32_t countCode) {
  appendVarint(_postings, article - _nextArticle);
  _nextArticle = article + 1;
  ++_articles;
  if (_postingCount++ % 2 == 0) {
    _counts.push_back(static_cast<char>(countCode));
  } else {
    _counts.back() = static_cast<char>(_counts.back() | static_cast<char>(countCode << 4U));
  }
}

void TermSectionsBuilder::finishTerm() {
  if (_termCount == 0) return;
  _terms.add(_term, _articles, _postings.size() - _postingsBegin, _globalWeight);
}

void TermSectionsBuilder::take(IndexSections& sections) {
  finishTerm();
  sections[Section::terms] = _terms.take();
  sections[Section::postings] = std::move(_postings);
  sections[Section::counts] = std::move(_counts);
}

}  // namespace quorvex::docuvault
