#include "platform/docuvault.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "common/idle_pool.h"
#include "common/locale.h"
#include "common/parallel.h"
#include "common/property_codec.h"
#include "semantic/article_analysis.h"
#include "semantic/format/first_version.h"
#include "semantic/format/term_weights.h"
#include "semantic/reading/index_reader.h"
#include "semantic/searching/index_query.h"
#include "semantic/writing/index_writer.h"
#include "semantic/writing/term_matrix.h"
#include "semantic/writing/truncated_svd.h"

namespace quorvex {

using namespace docuvault;

namespace {

std::string languageOf(std::string_view identifier) {
  const std::optional<Locale> locale = Locale::withIdentifier(identifier);
  return locale ? locale->language() : std::string();
}

/// More articles have more subjects, but not in proportion. As many dimensions as articles would
/// reduce nothing, so there are at most about a quarter as many. Between 60 and 150 dimensions the
/// test collections score about the same; 96 cost little in a large book.
std::size_t dimensionsFor(std::size_t articles) {
  const auto wanted = static_cast<std::size_t>(3 * std::sqrt(static_cast<double>(articles)));
  return std::min({(articles + 3) / 4, wanted, std::size_t{96}});
}

/// Splits queries into terms. Thread-safe.
class QueryAnalysis {
 public:
  explicit QueryAnalysis(std::string language) : _language(std::move(language)) {}

  QueryTerms terms(std::string_view text) {
    std::unique_ptr<StemAnalyzer> analyzer =
        _analyzers.take([this] { return std::make_unique<StemAnalyzer>(_language); });
    analyzer->count(text, 1);
    QueryTerms result;
    for (const auto& [term, count] : analyzer->takeCounts()) {
      result.emplace_back(analyzer->term(term), count);
    }
    // Reuses an analyzer for its cached words, but not once they are too many.
    constexpr std::uint32_t mostRememberedTerms = 10'000;
    if (analyzer->termCount() < mostRememberedTerms) _analyzers.giveBack(std::move(analyzer));
    return result;
  }

 private:
  std::string _language;
  IdlePool<StemAnalyzer> _analyzers;
};

class StoredIndex final : public HelpRDXIndex {
 public:
  StoredIndex(Data data, std::shared_ptr<const SemanticIndexReader> reader, Dictionary attributes)
      : _data(std::move(data)),
        _reader(std::move(reader)),
        _attributes(std::move(attributes)),
        _queries(languageOf(_reader->info().language)) {}

  void setObject(const Value& object, std::string_view attribute) override {
    _attributes.insert_or_assign(std::string(attribute), object);
    _attributesChanged = true;
  }

  std::optional<Value> objectForAttribute(std::string_view attribute) const override {
    const Value* value = find(_attributes, attribute);
    return value == nullptr ? std::nullopt : std::optional(*value);
  }

  Data versionedRDXIndexData() const override {
    if (!_attributesChanged) return _data;
    auto parts = takeApart(_data.bytes(), indexContainer);
    if (!parts) return {};
    IndexSections sections(*std::move(parts));
    sections[Section::attributes].clear();
    Dictionary attributes = _attributes;
    std::erase_if(attributes, [](const auto& entry) { return !isEncodable(entry.second); });
    appendProperties(sections[Section::attributes], attributes);
    return Data(sections.assemble());
  }

  std::string language() const override { return _reader->info().language; }

  std::string description() const override;

  std::vector<HelpRDXAnswer> articlesNearestToText(std::string_view text,
                                                   std::size_t count) const override {
    return answers(nearestToTerms(*_reader, _queries.terms(text), count));
  }

  std::vector<HelpRDXAnswer> articlesNearestToArticle(std::string_view subPath,
                                                      std::size_t count) const override {
    return answers(nearestToArticle(*_reader, subPath, count));
  }

 private:
  std::vector<HelpRDXAnswer> answers(const std::vector<NearArticle>& articles) const {
    const ArticleTable& table = _reader->articleTable();
    std::vector<HelpRDXAnswer> answers;
    answers.reserve(articles.size());
    for (const auto& [article, similarity] : articles) {
      HelpRDXAnswer& answer = answers.emplace_back();
      answer.subPath = table.subPath(article, &answer.title);
      answer.similarity = similarity;
      answer.article = article;
    }
    return answers;
  }

  Data _data;
  std::shared_ptr<const SemanticIndexReader> _reader;  ///< reads `_data`
  Dictionary _attributes;
  bool _attributesChanged = false;
  mutable QueryAnalysis _queries;
};

std::string StoredIndex::description() const {
  const Value* ignore = find(_attributes, HelpRDXIndexAttributeIgnoreRDXKey);
  const bool ignored = ignore != nullptr && ignore->boolean() != nullptr && *ignore->boolean();
  const IndexInfo& info = _reader->info();
  const auto perMille = std::lround(info.shareOfVariance * 1000);
  std::string text = "Semantic index";
  const auto addLine = [&text](std::string_view name, std::string_view value) {
    text.append("\n\t").append(name).append(": ").append(value);
  };
  addLine("language", info.language.empty() ? "none" : info.language);
  addLine("articles", std::to_string(info.articles) + " (" + std::to_string(info.excluded) +
                          " excluded from search)");
  addLine("terms", std::to_string(info.terms));
  addLine("dimensions", std::to_string(info.dimensions));
  addLine("share of variance kept",
          std::to_string(perMille / 10) + '.' + std::to_string(perMille % 10) + " %");
  addLine("to be ignored", ignored ? "yes" : "no");
  return text;
}

}  // namespace

std::shared_ptr<HelpRDXIndex> HelpRDXIndex::HelpRDXIndexWithVersionedData(const Data& data) {
  const bool isFirst = containerVersion(data.lazyBytes(), indexMagic) == firstIndexVersion;
  const Data current = isFirst ? Data(convertFirstVersion(data.bytes())) : data;
  std::shared_ptr<const SemanticIndexReader> reader =
      SemanticIndexReader::open(current.lazyBytes());
  if (reader == nullptr) return nullptr;
  ByteReader attributes(reader->section(Section::attributes).all());
  DecodedProperties decoded = readProperties(attributes);
  if (!decoded.isComplete) return nullptr;
  return std::make_shared<StoredIndex>(current, std::move(reader), std::move(decoded.properties));
}

struct HelpAnalyzedArticle {
  ArticleRecord record;
  AnalyzedArticle article;
};

namespace {

HelpAnalyzedArticle analyzed(StemAnalyzer& analyzer, std::size_t number, const HelpArticle& article,
                             const TextWords* words) {
  HelpAnalyzedArticle result;
  result.record = articleRecord(article.properties, article.subPath);
  result.article = {number, articleTerms(analyzer, result.record, article.properties, words)};
  return result;
}

class Analysis final : public HelpArticleAnalysis {
 public:
  Analysis(StemAnalyzer& analyzer, std::size_t number) : _analyzer(analyzer), _number(number) {}

  HelpAnalyzedArticleRef analyze(const HelpArticle& article, const TextWords* words) override {
    return std::make_shared<HelpAnalyzedArticle>(analyzed(_analyzer, _number, article, words));
  }

 private:
  StemAnalyzer& _analyzer;
  std::size_t _number;
};

}  // namespace

struct HelpRDXIndexBuilder::State {
  void startAnalyzers(std::size_t count) {
    while (analyzers.size() < count)
      analyzers.push_back(std::make_unique<StemAnalyzer>(languageOf(language)));
  }

  std::string language;                                  ///< locale identifier
  std::vector<std::unique_ptr<StemAnalyzer>> analyzers;  ///< one per worker so far
  std::mutex startOfAnalyzers;
  std::vector<ArticleRecord> records;
  std::vector<AnalyzedArticle> articles;
  std::shared_ptr<HelpRDXIndex> index;
};

HelpRDXIndexBuilder::HelpRDXIndexBuilder(
    const std::optional<std::vector<std::string>>& /*knownPhraseArray*/,
    const std::optional<std::string>& language)
    : _state(std::make_unique<State>()) {
  _state->language = language.value_or(std::string());
}

HelpRDXIndexBuilder::~HelpRDXIndexBuilder() = default;

void HelpRDXIndexBuilder::addHelpArticleWithProperties(const Dictionary& properties,
                                                       std::string_view subPath) {
  addHelpArticles(1, 1, [&](std::size_t) { return HelpArticle{properties, std::string(subPath)}; });
}

void HelpRDXIndexBuilder::addHelpArticles(
    std::size_t count, unsigned workers, const std::function<HelpArticle(std::size_t)>& articleAt) {
  State& state = *_state;
  state.index = nullptr;
  workers = std::max(1U, workers);
  state.startAnalyzers(workers);
  const std::size_t first = state.records.size();
  state.records.resize(first + count);
  state.articles.resize(first + count);
  forEachBlock(count, 1, workers, [&](std::size_t i, std::size_t, unsigned worker) {
    const HelpArticle article = articleAt(i);
    HelpAnalyzedArticle result = article.analyzed != nullptr
                                     ? std::move(*article.analyzed)
                                     : analyzed(*state.analyzers[worker], worker, article, nullptr);
    state.records[first + i] = std::move(result.record);
    state.articles[first + i] = std::move(result.article);
  });
}

std::unique_ptr<HelpArticleAnalysis> HelpRDXIndexBuilder::createAnalysis() {
  State& state = *_state;
  const std::lock_guard lock(state.startOfAnalyzers);
  const std::size_t number = state.analyzers.size();
  state.startAnalyzers(number + 1);
  return std::make_unique<Analysis>(*state.analyzers.back(), number);
}

std::shared_ptr<HelpRDXIndex> HelpRDXIndexBuilder::index(unsigned workers) {
  State& state = *_state;
  if (state.index) return state.index;
  if (state.articles.size() > mostNumbers) return nullptr;
  const TermMatrix terms = termMatrix(state.analyzers, state.articles, workers);
  const ReducedRows reduced =
      truncatedSvd(terms.matrix, dimensionsFor(state.articles.size()), workers);
  state.index = HelpRDXIndex::HelpRDXIndexWithVersionedData(
      Data(writeIndex(state.language, state.records, terms, reduced)));
  return state.index;
}

}  // namespace quorvex
