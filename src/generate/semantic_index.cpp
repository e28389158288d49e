#include "generate/semantic_index.h"

#include <algorithm>
#include <utility>

#include "common/files.h"
#include "common/log.h"
#include "common/unicode.h"
#include "generate/between_pages.h"
#include "indexfile/keys.h"

namespace quorvex {

namespace {

using Documents = std::span<const std::shared_ptr<QXParsedDocument>>;

constexpr std::size_t fewestPages = 6;
constexpr std::size_t smallestAverage = 51;

/// Sets the entry unless the text is empty.
void setText(Dictionary& properties, std::string_view key, std::string text) {
  if (!text.empty()) properties.emplace(key, std::move(text));
}

Array actions(const QXParsedDocument& document) {
  Array actions;
  for (const ScriptLink& link : document.xScriptLinks()) {
    const auto name = link.find("Name");
    const auto target = link.find("Link");
    if (name == link.end() || target == link.end()) continue;
    actions.emplace_back(Dictionary{{std::string(HelpDocPropertyActionName), name->second},
                                    {std::string(HelpDocPropertyActionLink), target->second}});
  }
  return actions;
}

bool hasTwoCharacters(std::string_view text) {
  std::size_t position = 0;
  if (!text.empty()) nextCharacter(text, position);
  return position < text.size();
}

void logAddition(const QXParsedDocument& document, const IndexSettings& settings) {
  const HelpArticle added = helpArticle(document, settings);
  QXLog(3, "RDX added document: %@\t\"%@\"\nProperties: %@", added.subPath,
        document.preparedTitle(), describe(added.properties));
}

HelpArticle articleOf(QXParsedDocument& document, const IndexSettings& settings) {
  HelpAnalyzedArticleRef analyzed = std::exchange(document.analysis().article, nullptr);
  if (analyzed == nullptr) return helpArticle(document, settings);
  return {.properties = {}, .subPath = {}, .analyzed = std::move(analyzed)};
}

void addArticles(HelpRDXIndexBuilder& builder, Documents documents, const IndexSettings& settings,
                 unsigned workers) {
  // The messages keep the pages' order.
  if (logs(3)) {
    for (const auto& document : documents)
      logAddition(*document, settings);
  }
  if (settings.useSlowMode) workers = 1;
  builder.addHelpArticles(documents.size(), workers, [&](std::size_t i) {
    betweenPages(settings);
    return articleOf(*documents[i], settings);
  });
}

}  // namespace

bool isWorthSemanticIndex(Documents documents) {
  const auto hasContent = [](const auto& document) { return document->hasContent(); };
  const auto pages = static_cast<std::size_t>(std::ranges::count_if(documents, hasContent));
  if (pages < fewestPages) return false;
  // The average is an integer division, so it reaches the bound when the sum reaches their product.
  const std::size_t enough = smallestAverage * documents.size();
  std::size_t length = 0;
  for (const auto& document : documents) {
    length += document->contentLength();
    if (length >= enough) return true;
  }
  return false;
}

std::unique_ptr<HelpRDXIndexBuilder> startSemanticIndex(const IndexSettings& settings) {
  const std::optional<Locale>& locale = settings.indexLocale;
  return std::make_unique<HelpRDXIndexBuilder>(
      std::nullopt, locale ? std::optional(locale->identifier()) : std::nullopt);
}

HelpArticle helpArticle(const QXParsedDocument& document, const IndexSettings& settings,
                        bool withContent) {
  return {articleProperties(document, settings.generateSummaries, withContent),
          articleSubPath(document.path())};
}

Dictionary articleProperties(const QXParsedDocument& document, bool generateSummaries,
                             bool withContent) {
  Dictionary properties;
  setText(properties, HelpDocPropertyTitle, document.preparedTitle());
  setText(properties, HelpDocPropertyDescription,
          generateSummaries ? document.summaryGeneratedIfNecessary() : document.summary());
  if (withContent) setText(properties, HelpDocPropertyContent, document.content());
  if (document.anchorsOnly() || document.keywordsOnly()) {
    properties.emplace(HelpDocPropertyExcludeFromSearch, true);
  }
  if (const auto keywords = document.keywordsArray()) {
    properties.emplace(HelpDocPropertyKeywords, Array(keywords->begin(), keywords->end()));
  }
  if (!document.xScriptLinks().empty()) {
    properties.emplace(HelpDocPropertyActions, actions(document));
  }
  return properties;
}

std::string articleSubPath(std::string_view path) {
  std::string subPath;
  while (hasTwoCharacters(path)) {
    const std::string_view component = lastPathComponent(path);
    if (component.ends_with(".lproj") || component == "Resources") break;
    subPath = subPath.empty() ? std::string(component) : appendPathComponent(component, subPath);
    path = withoutLastPathComponent(path);
  }
  return subPath;
}

Dictionary createSemanticIndex(Documents documents, const IndexSettings& settings,
                               SemanticIndexThreads threads, HelpRDXIndexBuilder* builder) {
  std::unique_ptr<HelpRDXIndexBuilder> own;
  if (builder == nullptr) {
    own = startSemanticIndex(settings);
    builder = own.get();
  }
  const bool worthIt = isWorthSemanticIndex(documents);
  if (worthIt) addArticles(*builder, documents, settings, threads.reading);
  const std::shared_ptr<HelpRDXIndex> index = builder->index(threads.computing);
  if (index == nullptr) {
    QXLog(0, "Error: The book is too large for a semantic index");
    return {};
  }
  if (!worthIt) index->setObject(true, HelpRDXIndexAttributeIgnoreRDXKey);

  Dictionary entries;
  const Data data = index->versionedRDXIndexData();
  if (!data.empty()) entries.emplace(semanticIndexKey, data);
  return entries;
}

}  // namespace quorvex
