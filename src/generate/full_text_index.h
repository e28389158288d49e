#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>

#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"

namespace quorvex {

/// Creates the full-text form of an index file, its "TSI_" entries: the index of the documents'
/// texts, the anchor table, the versions record and the location of the book's files. A document
/// that cannot be indexed is logged and left out.
Dictionary createFullTextIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const IndexSettings& settings, unsigned workers);

/// Maps anchor names to the paths of the pages that have them, in page order.
using AnchorTable = std::map<std::string, Array, std::less<>>;

/// Adds the document's path to the entry of each of its anchors. An empty anchor is logged.
void mergeAnchors(const QXParsedDocument& document, AnchorTable& anchorTable);

}  // namespace quorvex
