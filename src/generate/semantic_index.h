#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"
#include "platform/docuvault.h"

namespace quorvex {

/// Thread counts for a semantic index.
struct SemanticIndexThreads {
  unsigned reading = 1;    ///< while texts are analysed
  unsigned computing = 1;  ///< from then on
};

/// Returns a builder without articles.
std::unique_ptr<HelpRDXIndexBuilder> startSemanticIndex(const IndexSettings& settings);

/// Returns a page's article; `withContent`: else its content is passed in another way.
HelpArticle helpArticle(const QXParsedDocument& document, const IndexSettings& settings,
                        bool withContent = true);

/// Creates the semantic form of an index file, its "RDXIndexData" entry. A book too small to
/// benefit gets an index without articles that tells readers to ignore it. `builder`: the one that
/// has analysed documents; null: none has been.
Dictionary createSemanticIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents,
                               const IndexSettings& settings, SemanticIndexThreads threads,
                               HelpRDXIndexBuilder* builder = nullptr);

/// Whether the book has at least 6 pages with content and on average at least 51 characters of
/// content per page, including empty pages.
bool isWorthSemanticIndex(std::span<const std::shared_ptr<QXParsedDocument>> documents);

/// Returns a page's properties in the index.
Dictionary articleProperties(const QXParsedDocument& document, bool generateSummaries,
                             bool withContent = true);

/// Returns the part of a page's path below the nearest folder named "Resources" or "*.lproj".
/// Without one, returns the whole path except for a first component of one character: the walk up
/// the path ends at fewer than two characters.
std::string articleSubPath(std::string_view path);

}  // namespace quorvex
