#include "platform/docuvault/article_analysis.h"

#include "platform/docuvault/docuvault.h"
#include "platform/docuvault/term_weights.h"

namespace quorvex::docuvault {

namespace {

/// Longer terms are encoded data rather than words.
constexpr std::size_t longestTerm = 64;
/// Terms are numbered in 28 bits beside their count's code.
constexpr std::uint32_t mostTerms = numberOf(UINT32_MAX);
constexpr std::uint32_t noTerm = ~std::uint32_t{0};

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

StemAnalyzer::StemAnalyzer(std::string_view language) : _tokenizer(""), _stemmer(language) {}

void StemAnalyzer::count(std::string_view text, std::uint32_t weight) {
  _tokenizer.reset(text);
  for (Token token; _tokenizer.next(token);) {
    if (token.term.size() > longestTerm) continue;
    const std::uint32_t stem = stemOf(token.term);
    if (stem == noTerm) continue;
    if (_counts[stem] == 0) _counted.push_back(stem);
    _counts[stem] += weight;
  }
}

std::uint32_t StemAnalyzer::stemOf(std::string_view word) {
  const std::uint32_t id = _words.insert(word);
  if (id < _stemOfWord.size()) return _stemOfWord[id];
  const std::string_view stem = _stemmer.stem(word);
  std::uint32_t stemId = noTerm;
  if (!stem.empty() && _stems.size() < mostTerms) {
    stemId = _stems.insert(stem);
    _counts.resize(_stems.size());
  }
  _stemOfWord.push_back(stemId);
  return stemId;
}

std::vector<TermCount> StemAnalyzer::takeCounts() {
  std::vector<TermCount> result;
  result.reserve(_counted.size());
  for (const std::uint32_t stem : _counted) {
    result.push_back({stem, _counts[stem]});
    _counts[stem] = 0;
  }
  _counted.clear();
  return result;
}

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
