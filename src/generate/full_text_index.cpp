#include "generate/full_text_index.h"

#include <utility>
#include <vector>

#include "common/log.h"
#include "generate/between_pages.h"
#include "generate/versions_record.h"
#include "indexfile/keys.h"

namespace quorvex {

namespace {

using Documents = std::span<const std::shared_ptr<QXParsedDocument>>;

/// The URL's path is the whole absolute path including "#" and the anchor; it has no fragment.
TSDocumentRef documentReference(const QXParsedDocument& document) {
  const std::optional<URL> url = URL::fileURL(document.absolutePathWithFragment());
  return url ? TSDocumentCreateWithURL(*url) : nullptr;
}

TSDocumentContent contentOf(QXParsedDocument& document, const IndexSettings& settings) {
  TSAnalyzedContentRef analyzed = std::exchange(document.analysis().fullText, nullptr);
  if (analyzed == nullptr) return documentContent(document, settings);
  return {.text = {}, .properties = {}, .analyzed = std::move(analyzed)};
}

/// Returns which documents were added.
std::vector<bool> addDocuments(const TSIndexRef& index, Documents documents,
                               const std::vector<TSDocumentRef>& references,
                               const IndexSettings& settings, unsigned workers) {
  return TSIndexAddDocuments(index, references, false, settings.useSlowMode ? 1 : workers,
                             [&](std::size_t i) {
                               betweenPages(settings);
                               return contentOf(*documents[i], settings);
                             });
}

Dictionary dictionaryOf(AnchorTable anchorTable) {
  Dictionary dictionary;
  while (!anchorTable.empty()) {
    auto entry = anchorTable.extract(anchorTable.begin());
    dictionary.emplace_hint(dictionary.end(), std::move(entry.key()), std::move(entry.mapped()));
  }
  return dictionary;
}

}  // namespace

FullTextIndex::FullTextIndex(const IndexSettings& settings)
    : buffer(std::make_shared<std::string>()) {
  Dictionary properties = {
      {std::string(kTSMinTermLength), static_cast<std::int64_t>(settings.minimumTermLength)},
      {std::string(kTSTermChars), contractionMarks},
  };
  if (settings.stopwords) {
    properties.emplace(kTSStopWords, Array(settings.stopwords->begin(), settings.stopwords->end()));
  }
  index = TSIndexCreateWithMutableData(buffer, std::nullopt, TSIndexType::inverted, properties);
}

TSDocumentContent documentContent(QXParsedDocument& document, const IndexSettings& settings) {
  const bool textless = document.anchorsOnly() || document.keywordsOnly();
  TSPlaces places = std::exchange(document.places(), {});
  if (textless) places = {};
  for (std::uint32_t& offset : places.offsets)
    offset += static_cast<std::uint32_t>(document.contentOffset());
  const std::string& description =
      settings.generateSummaries ? document.summaryGeneratedIfNecessary() : document.summary();
  return {
      .text = textless ? std::string() : document.fullText(),
      .properties = {{std::string(descriptionProperty), description},
                     {std::string(titleProperty), document.preparedTitle()}},
      .places = std::move(places),
      .traits = textless ? std::nullopt : std::exchange(document.traits(), std::nullopt),
  };
}

void mergeAnchors(const QXParsedDocument& document, AnchorTable& anchorTable) {
  const std::string path = document.absolutePath();
  for (const std::string& anchor : document.anchors()) {
    if (anchor.empty()) {
      QXLog(0, "Error: anchor was not valid: %@ (%@)", anchor, "string");
      continue;
    }
    anchorTable[anchor].emplace_back(path);
  }
}

Dictionary createFullTextIndex(Documents documents, const IndexSettings& settings, unsigned workers,
                               const FullTextIndex& started) {
  const auto& [buffer, index] = started;
  std::vector<TSDocumentRef> references;
  references.reserve(documents.size());
  for (const auto& document : documents)
    references.push_back(documentReference(*document));
  const std::vector<bool> added = addDocuments(index, documents, references, settings, workers);

  AnchorTable anchorTable;
  for (std::size_t i = 0; i < documents.size(); ++i) {
    const QXParsedDocument& document = *documents[i];
    mergeAnchors(document, anchorTable);
    if (references[i] == nullptr) {
      QXLog(0, "Error: Could not create TSDocument with URL: %@", document.path());
    } else if (!added[i]) {
      QXLog(0, "Error: Could not add this document to the index: %@", document.path());
    }
  }
  TSIndexClose(index);

  Dictionary entries;
  if (!buffer->empty()) entries.emplace(fullTextIndexKey, Data(std::move(*buffer)));
  if (!anchorTable.empty()) entries.emplace(anchorTableKey, dictionaryOf(std::move(anchorTable)));
  entries.emplace(useRemoteRootKey, settings.useRemoteRoot);
  entries.emplace(versionsRecordKey, versionsDictionary());
  const std::string remoteRoot = settings.remoteRoot ? settings.remoteRoot->absoluteString() : "";
  if (settings.useRemoteRoot && !remoteRoot.empty()) {
    entries.emplace(remoteRootKey, remoteRoot);
    entries.emplace(preferNetworkFilesKey, true);
  }
  return entries;
}

}  // namespace quorvex
