#include "fulltext/format/derived_sections.h"

#include <string_view>

#include "fulltext/format/analysis_properties.h"
#include "fulltext/format/analysis_section.h"
#include "fulltext/format/code_table.h"
#include "fulltext/format/document_table.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/joined_terms.h"
#include "fulltext/format/place_names.h"
#include "fulltext/format/property_table.h"
#include "fulltext/format/title_table.h"
#include "platform/textsift.h"
#include "text/term_dictionary.h"
#include "text/tokenizer.h"

namespace quorvex {

namespace {

std::string titlesOf(const DocumentTable& documents, const PropertyTable& properties,
                     const IndexDescription& description) {
  std::vector<std::string_view> titles(documents.size());
  properties.forEach(titleProperty, [&](std::uint32_t document, std::string_view title) {
    if (documents.length(document) > 0) titles[document] = title;
  });
  const WordFilter filter(
      analysisSettings(description.analysisProperties).value_or(AnalysisSettings()));
  Tokenizer tokenizer(filter.termCharacters());
  return encodeTitles(titles, filter, tokenizer);
}

std::string codesOf(const TermDictionary& terms) {
  std::vector<std::uint32_t> counts;
  counts.reserve(terms.size());
  for (TermDictionary::Cursor cursor(terms, 0); cursor.next();)
    counts.push_back(cursor.entry().documentCount);
  return encodeCodes(counts);
}

}  // namespace

void addDerivedSections(std::vector<std::string>& sections) {
  const auto section = [&](IndexSection kind) -> std::string& {
    return sections[static_cast<std::size_t>(kind) - 1];
  };
  const DocumentTable documents(section(IndexSection::documents));
  const TermDictionary terms(section(IndexSection::terms));
  const PropertyTable properties(section(IndexSection::properties), documents.size());
  section(IndexSection::codes) = codesOf(terms);
  section(IndexSection::titles) =
      titlesOf(documents, properties, decodeAnalysis(section(IndexSection::analysis)));
  const TitleTable titles(section(IndexSection::titles), documents.size());
  section(IndexSection::joinedTerms) = encodeJoinedTerms(terms, titles.terms());
  section(IndexSection::placeNames) = encodePlaceNames(
      NameTable(section(IndexSection::names)),
      PlaceTable(section(IndexSection::places), documents.size()), documents.size());
}

}  // namespace quorvex
