#include "platform/textsift.h"

#include "fulltext/document.h"
#include "fulltext/format/analysis_properties.h"
#include "fulltext/reading/index_reader.h"
#include "fulltext/textsift_index.h"

namespace quorvex {

class TSDocumentIterator {
 public:
  std::shared_ptr<const IndexReader> reader;
  TSDocumentRef parent;
  std::uint32_t next = DocumentTable::none;
};

namespace {

IndexWriter* writerOf(const TSIndexRef& index) {
  return index == nullptr ? nullptr : index->writer.get();
}

const IndexReader* readerOf(const TSIndexRef& index) {
  return index == nullptr ? nullptr : index->reader.get();
}

std::optional<TSDocumentID> findIn(const std::shared_ptr<const IndexReader>& reader,
                                   const TSDocumentRef& document) {
  if (document == nullptr) return std::nullopt;
  if (const std::optional<TSDocumentID> known = document->idIn(reader)) return known;
  std::optional<TSDocumentID> id;
  for (const TSDocument* at : lineOf(document.get())) {
    if (const std::optional<TSDocumentID> known = at->idIn(reader)) {
      id = known;
      continue;
    }
    if (!at->url()) return std::nullopt;
    id = reader->find(documentIdentity(id, at->url()->absoluteString()));
    if (!id) return std::nullopt;
  }
  return id;
}

}  // namespace

TSIndexRef TSIndexCreateWithMutableData(std::shared_ptr<std::string> buffer,
                                        std::optional<std::string> name, TSIndexType type,
                                        const Dictionary& analysisProperties) {
  std::optional<AnalysisSettings> settings = analysisSettings(analysisProperties);
  if (buffer == nullptr || type != TSIndexType::inverted || !settings) return nullptr;
  auto index = std::make_shared<TSIndex>();
  index->description = {std::move(name), analysisProperties};
  std::optional<std::string> section = encodeAnalysis(index->description);
  if (!section) return nullptr;
  index->buffer = std::move(buffer);
  index->writer = std::make_unique<IndexWriter>(std::move(*settings), std::move(*section));
  return index;
}

TSDocumentRef TSDocumentCreateWithURL(const URL& url) {
  return std::make_shared<TSDocument>(nullptr, url);
}

TSDocumentRef TSDocumentCreateWithParent(const TSDocumentRef& parent, const URL& url) {
  return std::make_shared<TSDocument>(parent, url);
}

bool TSIndexAddDocumentWithText(const TSIndexRef& index, const TSDocumentRef& document,
                                std::string_view text, bool mayReplace) {
  IndexWriter* writer = writerOf(index);
  return writer != nullptr && writer->addText(document, text, mayReplace);
}

std::vector<bool> TSIndexAddDocuments(
    const TSIndexRef& index, const std::vector<TSDocumentRef>& documents, bool mayReplace,
    unsigned workers, const std::function<TSDocumentContent(std::size_t)>& contentOf) {
  IndexWriter* writer = writerOf(index);
  if (writer == nullptr) return std::vector<bool>(documents.size());
  return writer->addAll(documents, mayReplace, workers, contentOf);
}

std::unique_ptr<TSAnalysis> TSIndexCreateAnalysis(const TSIndexRef& index) {
  IndexWriter* writer = writerOf(index);
  return writer == nullptr ? nullptr : writer->createAnalysis();
}

bool TSIndexSetDocumentProperties(const TSIndexRef& index, const TSDocumentRef& document,
                                  const Dictionary& properties) {
  IndexWriter* writer = writerOf(index);
  return writer != nullptr && writer->setProperties(document, properties);
}

void TSIndexClose(const TSIndexRef& index) {
  if (index == nullptr) return;
  if (index->writer != nullptr) index->writer->finish(*index->buffer);
  index->writer.reset();
  index->reader.reset();
  index->buffer.reset();
}

TSIndexRef TSIndexOpenWithData(const Data& data, const std::optional<std::string>& name) {
  auto index = std::make_shared<TSIndex>();
  index->reader = IndexReader::open(data);
  if (index->reader == nullptr) return nullptr;
  if (name && index->reader->description().name != name) return nullptr;
  return index;
}

std::shared_ptr<TSDocumentIterator> TSIndexDocumentIteratorCreate(const TSIndexRef& index,
                                                                  const TSDocumentRef& parent) {
  const IndexReader* reader = readerOf(index);
  if (reader == nullptr) return nullptr;
  std::optional<TSDocumentID> id = DocumentTable::none;
  if (parent != nullptr) id = findIn(index->reader, parent);
  if (!id) return nullptr;
  auto iterator = std::make_shared<TSDocumentIterator>();
  iterator->reader = index->reader;
  iterator->parent = parent;
  iterator->next = reader->documents().firstChild(*id);
  return iterator;
}

TSDocumentRef TSIndexDocumentIteratorCopyNext(const std::shared_ptr<TSDocumentIterator>& iterator) {
  if (iterator == nullptr || iterator->next == DocumentTable::none) return nullptr;
  const std::uint32_t id = iterator->next;
  iterator->next = iterator->reader->documents().nextSibling(id);
  const std::optional<std::string> text = iterator->reader->url(id);
  return std::make_shared<TSDocument>(iterator->parent, text ? URL::parse(*text) : std::nullopt,
                                      iterator->reader, id);
}

std::optional<URL> TSDocumentCopyURL(const TSDocumentRef& document) {
  return document == nullptr ? std::nullopt : document->url();
}

std::optional<Dictionary> TSIndexCopyDocumentProperties(const TSIndexRef& index,
                                                        const TSDocumentRef& document) {
  const std::optional<TSDocumentID> id = TSIndexGetDocumentID(index, document);
  const IndexReader* reader = readerOf(index);
  return id && reader != nullptr ? reader->properties(*id) : std::nullopt;
}

std::optional<TSDocumentID> TSIndexGetDocumentID(const TSIndexRef& index,
                                                 const TSDocumentRef& document) {
  if (document == nullptr) return std::nullopt;
  if (const IndexWriter* writer = writerOf(index)) return writer->idOf(document);
  return readerOf(index) != nullptr ? findIn(index->reader, document) : std::nullopt;
}

std::vector<TSTermID> TSIndexCopyTermIDArrayForDocumentID(const TSIndexRef& index,
                                                          TSDocumentID id) {
  const IndexReader* reader = readerOf(index);
  if (reader == nullptr) return {};
  const std::span<const std::uint32_t> terms = reader->termsOf(id);
  return {terms.begin(), terms.end()};
}

std::optional<std::string> TSIndexCopyTermStringForTermID(const TSIndexRef& index, TSTermID id) {
  const IndexReader* reader = readerOf(index);
  return reader == nullptr ? std::nullopt : reader->terms().term(id);
}

Dictionary TSIndexGetAnalysisProperties(const TSIndexRef& index) {
  if (index == nullptr) return {};
  return index->reader != nullptr ? index->reader->description().analysisProperties
                                  : index->description.analysisProperties;
}

}  // namespace quorvex
