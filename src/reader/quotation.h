#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/textsift.h"
#include "reader/answers.h"
#include "reader/page_texts.h"

namespace quorvex::reader {

/// A hit's page and the places to quote, in the order of the hit's places.
struct PageToQuote {
  TSDocumentID document;
  std::size_t hit;
  std::vector<TSFoundPlace> places;
};

std::vector<quorvex_range> publicRanges(const std::vector<TSTextRange>& ranges);

/// Gives the places of hits their snippets from the texts of the book. A page that cannot be read,
/// or has changed, gives none. Of a large page only the part behind a place's fragment is parsed,
/// and no answer reads more than a fixed amount.
void addSnippets(const TSSearchRef& search, const PageTexts& texts, const TSSearchTerms& terms,
                 std::span<const PageToQuote> pages, std::vector<quorvex_hit>& hits);

}  // namespace quorvex::reader
