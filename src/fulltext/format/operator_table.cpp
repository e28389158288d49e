#include "fulltext/format/operator_table.h"

#include "common/bytes.h"
#include "common/lazy_reader.h"
#include "fulltext/format/posting_lists.h"

namespace quorvex {

OperatorTable::OperatorTable(const LazyBytes& section) {
  LazyReader reader(section);
  const LazyBytes operators = reader.text();
  const LazyBytes postings = reader.text();
  if (!reader.ok()) return;
  _operators = TermDictionary(operators);
  _postings = postings;
  _frequencies = reader.rest();
}

std::string encodeOperators(const std::vector<std::string_view>& operators,
                            const std::vector<std::uint32_t>& documentCounts,
                            const std::vector<std::uint32_t>& postingDocuments,
                            std::string_view frequencies) {
  std::string postings;
  const std::string terms = encodeTerms(operators, documentCounts, postingDocuments, postings);
  std::string section;
  appendText(section, terms);
  appendText(section, postings);
  section += frequencies;
  return section;
}

}  // namespace quorvex
