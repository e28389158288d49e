#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/value.h"
#include "extract/parsed_document.h"

namespace quorvex {

struct SemanticIndexOptions {
  std::optional<std::string> language;  ///< locale identifier
  bool generateSummaries = false;
  bool pauseAfterDocument = false;
  unsigned workers = 1;
  unsigned analysisWorkers = 1;  ///< as long as pages are read
};

/// The semantic form of an index file, its "RDXIndexData" entry. A book too small for a semantic
/// index to be of use gets an index without articles that readers are told to ignore.
Dictionary createSemanticIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const SemanticIndexOptions& options);

/// Whether the book has at least 6 pages with content and at least 51 characters of content a page
/// on average over all its pages, the empty ones too.
bool isWorthSemanticIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents);

/// What the index is told of one page.
Dictionary articleProperties(const QXParsedDocument& document, bool generateSummaries);

/// The part of a page's path below the nearest folder whose name ends in ".lproj" or is
/// "Resources". Without such a folder the whole path, but for a first component of one character:
/// the walk up the path ends where fewer than two characters are left.
std::string articleSubPath(std::string_view path);

}  // namespace quorvex
