#include "semantic/article_analysis.h"

#include "platform/docuvault.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

std::string stringProperty(const Dictionary& properties, std::string_view key) {
  const Value* value = find(properties, key);
  return value != nullptr && value->string() != nullptr ? *value->string() : std::string();
}

const Array& arrayProperty(const Dictionary& properties, std::string_view key) {
  static const Array none;
  const Value* value = find(properties, key);
  return value != nullptr && value->array() != nullptr ? *value->array() : none;
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
                                        const Dictionary& properties) {
  analyzer.count(record.title, titleWeight);
  for (const std::string& keyword : record.keywords)
    analyzer.count(keyword, titleWeight);
  analyzer.count(record.description, 1);
  const Value* content = find(properties, HelpDocPropertyContent);
  if (content != nullptr && content->string() != nullptr) analyzer.count(*content->string(), 1);

  std::vector<std::uint32_t> terms;
  const std::vector<TermCount> counts = analyzer.takeCounts();
  terms.reserve(counts.size());
  for (const auto& [term, count] : counts) {
    terms.push_back(packed(term, codeOfCount(count)));
  }
  return terms;
}

}  // namespace quorvex::docuvault
