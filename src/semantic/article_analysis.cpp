#include "semantic/article_analysis.h"

#include "platform/docuvault.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

const std::string& stringProperty(const Dictionary& properties, std::string_view key) {
  static const std::string none;
  const Value* value = find(properties, key);
  return value != nullptr && value->string() != nullptr ? *value->string() : none;
}

const Array& arrayProperty(const Dictionary& properties, std::string_view key) {
  static const Array none;
  const Value* value = find(properties, key);
  return value != nullptr && value->array() != nullptr ? *value->array() : none;
}

void countWords(StemAnalyzer& analyzer, const TextWords& words) {
  analyzer.count(words.numbers, 1, words.termOf);
  for (std::string_view others = words.others; !others.empty();) {
    const std::size_t end = others.find('\n');
    analyzer.countTerm(others.substr(0, end), 1);
    others.remove_prefix(end + 1);
  }
}

}  // namespace

ArticleRecord articleRecord(const Dictionary& properties, std::string_view subPath) {
  ArticleRecord record;
  record.subPath = subPath;
  record.title = stringProperty(properties, HelpDocPropertyTitle);
  record.description = stringProperty(properties, HelpDocPropertyDescription);
  for (const Value& keyword : arrayProperty(properties, HelpDocPropertyKeywords)) {
    if (keyword.string() != nullptr) record.keywords.push_back(*keyword.string());
  }
  for (const Value& action : arrayProperty(properties, HelpDocPropertyActions)) {
    if (const Dictionary* fields = action.dictionary()) {
      record.actions.push_back({stringProperty(*fields, HelpDocPropertyActionName),
                                stringProperty(*fields, HelpDocPropertyActionLink)});
    }
  }
  const Value* excluded = find(properties, HelpDocPropertyExcludeFromSearch);
  record.excludedFromSearch =
      excluded != nullptr && excluded->boolean() != nullptr && *excluded->boolean();
  return record;
}

std::vector<std::uint32_t> articleTerms(StemAnalyzer& analyzer, const ArticleRecord& record,
                                        const Dictionary& properties, const TextWords* words) {
  analyzer.count(record.title, titleWeight);
  for (const std::string& keyword : record.keywords)
    analyzer.count(keyword, titleWeight);
  analyzer.count(record.description, 1);
  if (words != nullptr) {
    countWords(analyzer, *words);
  } else {
    analyzer.count(stringProperty(properties, HelpDocPropertyContent), 1);
  }

  std::vector<std::uint32_t> terms;
  const std::vector<TermCount> counts = analyzer.takeCounts();
  terms.reserve(counts.size());
  for (const auto& [term, count] : counts) {
    terms.push_back(packed(term, codeOfCount(count)));
  }
  return terms;
}

}  // namespace quorvex::docuvault
