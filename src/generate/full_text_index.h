#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>

#include "common/url.h"
#include "common/value.h"
#include "extract/parsed_document.h"

namespace quorvex {

struct FullTextOptions {
  std::uint64_t minimumTermLength = 1;
  std::optional<std::set<std::string>> stopwords;
  bool generateSummaries = false;
  bool useRemoteRoot = false;
  std::optional<URL> remoteRoot;
  bool pauseAfterDocument = false;
  unsigned workers = 1;
};

/// The full-text form of an index file, its "TSI_" entries: the index over the documents' texts,
/// the table from anchor names to the pages that carry them, the versions record and where the
/// book's files lie. A document that cannot be indexed is logged and left out.
Dictionary createFullTextIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const FullTextOptions& options);

/// From anchor names to the paths of the pages that carry them, in page order.
using AnchorTable = std::map<std::string, Array, std::less<>>;

/// Adds the document's path to the entry of each of its anchors. An empty anchor is logged.
void mergeAnchors(const QXParsedDocument& document, AnchorTable& anchorTable);

}  // namespace quorvex
