#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"

namespace quorvex {

/// How many threads work on a semantic index.
struct SemanticIndexThreads {
  unsigned reading = 1;    ///< while pages are read
  unsigned computing = 1;  ///< from then on
};

/// The semantic form of an index file, its "RDXIndexData" entry. A book too small for a semantic
/// index to be of use gets an index without articles that readers are told to ignore.
Dictionary createSemanticIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const IndexSettings& settings, SemanticIndexThreads threads);

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
