#include "generate/full_text_index.h"

#include <vector>

#include "common/log.h"
#include "generate/slow_mode.h"
#include "generate/versions_record.h"
#include "indexfile/keys.h"
#include "platform/textsift.h"

namespace quorvex {

namespace {

using Documents = std::span<const std::shared_ptr<QXParsedDocument>>;

TSIndexRef createIndex(const std::shared_ptr<std::string>& buffer, const FullTextOptions& options) {
  Dictionary properties = {
      {std::string(kTSMinTermLength), static_cast<std::int64_t>(options.minimumTermLength)},
      {std::string(kTSTermChars), contractionMarks},
  };
  if (options.stopwords) {
    properties.emplace(kTSStopWords, Array(options.stopwords->begin(), options.stopwords->end()));
  }
  return TSIndexCreateWithMutableData(buffer, std::nullopt, TSIndexType::inverted, properties);
}

/// The whole absolute path with its fragment is the URL's path; the URL has no fragment of its own.
TSDocumentRef documentReference(const QXParsedDocument& document) {
  const std::optional<URL> url = URL::fileURL(document.absolutePathWithFragment());
  return url ? TSDocumentCreateWithURL(*url) : nullptr;
}

TSDocumentContent contentOf(const QXParsedDocument& document, bool generateSummaries) {
  const bool textless = document.anchorsOnly() || document.keywordsOnly();
  const std::string& description =
      generateSummaries ? document.summaryGeneratedIfNecessary() : document.summary();
  return {
      .text = textless ? std::string() : document.fullText(),
      .properties = {{std::string(descriptionProperty), description},
                     {std::string(titleProperty), document.preparedTitle()}},
  };
}

/// Which of the documents the index took.
std::vector<bool> addDocuments(const TSIndexRef& index, Documents documents,
                               const std::vector<TSDocumentRef>& references,
                               const FullTextOptions& options) {
  const unsigned workers = options.pauseAfterDocument ? 1 : options.workers;
  return TSIndexAddDocuments(index, references, false, workers, [&](std::size_t i) {
    if (options.pauseAfterDocument) pauseSlowMode();
    return contentOf(*documents[i], options.generateSummaries);
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

Dictionary createFullTextIndex(Documents documents, const FullTextOptions& options) {
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef index = createIndex(buffer, options);
  std::vector<TSDocumentRef> references;
  references.reserve(documents.size());
  for (const auto& document : documents)
    references.push_back(documentReference(*document));
  const std::vector<bool> added = addDocuments(index, documents, references, options);

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
  entries.emplace(useRemoteRootKey, options.useRemoteRoot);
  entries.emplace(versionsRecordKey, versionsDictionary());
  const std::string remoteRoot = options.remoteRoot ? options.remoteRoot->absoluteString() : "";
  if (options.useRemoteRoot && !remoteRoot.empty()) {
    entries.emplace(remoteRootKey, remoteRoot);
    entries.emplace(preferNetworkFilesKey, true);
  }
  return entries;
}

}  // namespace quorvex
