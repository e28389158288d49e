#include "fulltext/writing/index_writer.h"

#include <algorithm>
#include <map>

#include "common/bytes.h"
#include "common/nesting.h"
#include "common/parallel.h"
#include "fulltext/format/block_table.h"
#include "fulltext/format/derived_sections.h"
#include "fulltext/format/document_table.h"
#include "fulltext/format/index_format.h"
#include "fulltext/format/property_table.h"
#include "fulltext/format/trait_table.h"
#include "fulltext/writing/inversion.h"
#include "fulltext/writing/operator_section.h"
#include "fulltext/writing/place_sections.h"

namespace quorvex {

namespace {

std::string encodeDocuments(const std::vector<PendingDocument>& documents,
                            const std::vector<std::uint64_t>& codeSizes) {
  std::vector<StoredDocument> stored;
  stored.reserve(documents.size());
  for (std::size_t i = 0; i < documents.size(); ++i)
    stored.push_back({documents[i].parentDistance, documents[i].text.length, codeSizes[i]});
  return encodeDocuments(stored);
}

std::string encodeUrls(const std::vector<PendingDocument>& documents) {
  BlockTableBuilder table;
  std::string_view previous;
  for (std::size_t i = 0; i < documents.size(); ++i) {
    if (i % documentsPerBlock == 0) {
      table.startBlock();
      previous = {};
    }
    const std::string_view url = documents[i].url;
    const std::size_t shared = std::min(sharedPrefixSize(previous, url), largestSharedPrefix);
    appendVarint(table.entries(), shared);
    appendText(table.entries(), url.substr(shared));
    previous = url;
  }
  return table.take();
}

std::string propertySection(const std::vector<PendingDocument>& documents) {
  std::vector<const std::optional<std::string>*> properties;
  properties.reserve(documents.size());
  for (const PendingDocument& document : documents)
    properties.push_back(&document.properties);
  return encodeProperties(properties);
}

/// Returns the language that most documents state, of several the first in byte order.
std::string_view commonLanguage(const std::vector<PendingDocument>& documents) {
  std::map<std::string_view, std::size_t> counts;
  for (const PendingDocument& document : documents) {
    if (document.traits && !document.traits->language.empty()) ++counts[document.traits->language];
  }
  const auto most = std::ranges::max_element(
      counts, std::less(), [](const auto& languageAndCount) { return languageAndCount.second; });
  return most == counts.end() ? std::string_view() : most->first;
}

TSAnalyzedContent analyzed(TextAnalyzer& analyzer, unsigned number, TSDocumentContent content,
                           std::size_t wordsFrom) {
  TSAnalyzedContent result;
  result.analyzer = number;
  result.places = std::move(content.places);
  result.traits = std::move(content.traits);
  result.text = analyzer.add(content.text, result.places.offsets, wordsFrom);
  result.properties = packProperties(content.properties);
  return result;
}

class Analysis final : public TSAnalysis {
 public:
  Analysis(TextAnalyzer& analyzer, unsigned number, std::atomic<std::size_t>& unplaced)
      : _analyzer(analyzer), _number(number), _unplaced(unplaced) {}

  TSAnalyzedContentRef analyze(TSDocumentContent content, std::size_t wordsFrom) override {
    ++_unplaced;
    return std::make_shared<TSAnalyzedContent>(
        analyzed(_analyzer, _number, std::move(content), wordsFrom));
  }
  std::optional<TextWords> words() const override { return _analyzer.words(); }

 private:
  TextAnalyzer& _analyzer;
  unsigned _number;
  std::atomic<std::size_t>& _unplaced;
};

/// Empty when the traits of no document are known.
std::string encodeTraits(const std::vector<PendingDocument>& documents,
                         const std::vector<TextSketch>& sketches) {
  const auto isKnown = [](const PendingDocument& document) { return document.traits.has_value(); };
  if (std::ranges::none_of(documents, isKnown)) return {};
  std::vector<IndexTraits> traits(documents.size());
  for (std::size_t i = 0; i < documents.size(); ++i) {
    if (isKnown(documents[i]))
      traits[i] = {documents[i].traits->linkShare, documents[i].traits->codeShare, sketches[i]};
  }
  return encodeTraits(commonLanguage(documents), traits);
}

}  // namespace

IndexWriter::IndexWriter(AnalysisSettings settings, std::string analysisSection)
    : _settings(std::move(settings)), _analysisSection(std::move(analysisSection)) {}

std::optional<std::uint32_t> IndexWriter::idOf(const DocumentRef& document) const {
  std::optional<std::uint32_t> id;
  for (const TSDocument* at : lineOf(document.get())) {
    if (!at->url()) return std::nullopt;
    const auto found = _ids.find(documentIdentity(id, at->url()->absoluteString()));
    if (found == _ids.end()) return std::nullopt;
    id = found->second;
  }
  return id;
}

/// Returns the id of a document; assigns one, after its parents', if it has none.
std::uint32_t IndexWriter::place(const TSDocument& document) {
  std::optional<std::uint32_t> parent;
  for (const TSDocument* at : lineOf(&document)) {
    const std::string& url = at->url()->absoluteString();
    const auto next = static_cast<std::uint32_t>(_documents.size());
    const auto [entry, added] = _ids.emplace(documentIdentity(parent, url), next);
    if (added) {
      PendingDocument& pending = _documents.emplace_back();
      pending.url = url;
      pending.parentDistance = parent ? next - *parent : 0;
    }
    parent = entry->second;
  }
  return *parent;
}

std::optional<std::uint32_t> IndexWriter::claim(const DocumentRef& document, bool mayReplace) {
  unsigned levels = 0;
  for (const TSDocument* at = document.get(); at != nullptr; at = at->parent().get()) {
    if (!at->url() || ++levels > maximumNesting) return std::nullopt;
  }
  if (document == nullptr) return std::nullopt;
  const std::uint32_t id = place(*document);
  PendingDocument& pending = _documents[id];
  if (pending.holdsText && !mayReplace) return std::nullopt;
  _replaced = _replaced || pending.holdsText;
  pending.holdsText = true;
  pending.properties.reset();
  pending.places = {};
  pending.traits.reset();
  return id;
}

void IndexWriter::startAnalyzers(unsigned count) {
  while (_analyzers.size() < count) {
    _analyzers.push_back(std::make_unique<TextAnalyzer>(_settings));
  }
}

std::unique_ptr<TSAnalysis> IndexWriter::createAnalysis() {
  const std::lock_guard lock(_startOfAnalyzers);
  const auto number = static_cast<unsigned>(_analyzers.size());
  startAnalyzers(number + 1);
  return std::make_unique<Analysis>(*_analyzers.back(), number, _unplaced);
}

bool IndexWriter::addText(const DocumentRef& document, std::string_view text, bool mayReplace) {
  const std::optional<std::uint32_t> id = claim(document, mayReplace);
  if (!id) return false;
  startAnalyzers(1);
  _documents[*id].analyzer = 0;
  _documents[*id].text = _analyzers[0]->add(text);
  return true;
}

std::vector<bool> IndexWriter::addAll(
    const std::vector<DocumentRef>& documents, bool mayReplace, unsigned workers,
    const std::function<TSDocumentContent(std::size_t)>& contentOf) {
  std::vector<bool> added;
  // For each document, the id its content goes to; none when it is not added or when a later one
  // replaces it.
  std::vector<std::optional<std::uint32_t>> ids;
  std::unordered_map<std::uint32_t, std::size_t> claimed;
  for (const DocumentRef& document : documents) {
    ids.push_back(claim(document, mayReplace));
    added.push_back(ids.back().has_value());
    if (!ids.back()) continue;
    const auto [earlier, isNew] = claimed.emplace(*ids.back(), ids.size() - 1);
    if (isNew) continue;
    ids[earlier->second].reset();
    earlier->second = ids.size() - 1;
  }
  workers =
      static_cast<unsigned>(std::clamp<std::size_t>(documents.size(), 1, std::max(1U, workers)));
  startAnalyzers(workers);
  forEachBlock(ids.size(), 1, workers, [&](std::size_t i, std::size_t, unsigned worker) {
    TSDocumentContent content = contentOf(i);
    if (!ids[i]) return;
    TSAnalyzedContent result;
    if (content.analyzed != nullptr) {
      result = std::move(*content.analyzed);
      --_unplaced;
    } else {
      result = analyzed(*_analyzers[worker], worker, std::move(content), TextAnalyzer::noWords);
    }
    PendingDocument& document = _documents[*ids[i]];
    document.analyzer = result.analyzer;
    document.places = std::move(result.places);
    document.traits = std::move(result.traits);
    document.text = std::move(result.text);
    document.properties = std::move(result.properties);
  });
  return added;
}

bool IndexWriter::setProperties(const DocumentRef& document, const Dictionary& properties) {
  const std::optional<std::uint32_t> id = idOf(document);
  std::optional<std::string> packed = packProperties(properties);
  if (!id || !packed) return false;
  _documents[*id].properties = std::move(packed);
  return true;
}

void IndexWriter::finish(std::string& out) {
  startAnalyzers(1);
  _ids.clear();
  TextSections texts = mergeTexts(_documents, _analyzers, _replaced || _unplaced > 0);
  std::string operators = makeOperatorSection(_documents, _analyzers);
  _analyzers.clear();
  std::vector<std::string> sections(indexSectionCount);
  const auto section = [&](IndexSection kind) -> std::string& {
    return sections[static_cast<std::size_t>(kind) - 1];
  };
  section(IndexSection::analysis) = std::move(_analysisSection);
  section(IndexSection::documents) = encodeDocuments(_documents, texts.codeSizes);
  section(IndexSection::urls) = encodeUrls(_documents);
  section(IndexSection::properties) = propertySection(_documents);
  PlaceSections places = encodePlaces(_documents);
  section(IndexSection::places) = std::move(places.places);
  section(IndexSection::names) = std::move(places.names);
  section(IndexSection::traits) = encodeTraits(_documents, texts.sketches);
  section(IndexSection::operators) = std::move(operators);
  section(IndexSection::terms) = std::move(texts.terms);
  section(IndexSection::postings) = std::move(texts.postings);
  section(IndexSection::frequencies) = std::move(texts.frequencies);
  section(IndexSection::occurrences) = std::move(texts.occurrences);
  _documents.clear();
  addDerivedSections(sections);
  assembleContainer(indexContainer, sections, out);
}

}  // namespace quorvex
