#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>

#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"
#include "platform/textsift.h"

namespace quorvex {

/// A full-text index under construction.
struct FullTextIndex {
  explicit FullTextIndex(const IndexSettings& settings);

  std::shared_ptr<std::string> buffer;  ///< its bytes once it is closed
  TSIndexRef index;
};

/// Returns what the index takes from a document, whose places and traits it takes away: no other
/// form needs them.
TSDocumentContent documentContent(QXParsedDocument& document, const IndexSettings& settings);

/// Creates the full-text form of an index file, its "TSI_" entries: the index of the documents'
/// texts, the anchor table, the versions record and the location of the book's files. A document
/// that cannot be indexed is logged and left out. `started`: the index that has analysed documents.
Dictionary createFullTextIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const IndexSettings& settings, unsigned workers,
                               const FullTextIndex& started);
inline Dictionary createFullTextIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                                      const IndexSettings& settings, unsigned workers) {
  return createFullTextIndex(documents, settings, workers, FullTextIndex(settings));
}

/// Maps anchor names to the paths of the pages that have them, in page order.
using AnchorTable = std::map<std::string, Array, std::less<>>;

/// Adds the document's path to the entry of each of its anchors. An empty anchor is logged.
void mergeAnchors(const QXParsedDocument& document, AnchorTable& anchorTable);

}  // namespace quorvex
