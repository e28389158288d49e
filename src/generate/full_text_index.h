#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>

#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"

namespace quorvex {

/// The full-text form of an index file, its "TSI_" entries: the index over the documents' texts,
/// the table from anchor names to the pages that carry them, the versions record and where the
/// book's files lie. A document that cannot be indexed is logged and left out.
Dictionary createFullTextIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const IndexSettings& settings, unsigned workers);

/// From anchor names to the paths of the pages that carry them, in page order.
using AnchorTable = std::map<std::string, Array, std::less<>>;

/// Adds the document's path to the entry of each of its anchors. An empty anchor is logged.
void mergeAnchors(const QXParsedDocument& document, AnchorTable& anchorTable);

}  // namespace quorvex
