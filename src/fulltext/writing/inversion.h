#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fulltext/writing/index_writer.h"

namespace quorvex {

/// The sections that follow from the texts of all documents.
struct TextSections {
  std::string terms;
  std::string postings;
  std::string frequencies;
  std::string occurrences;
  std::vector<std::uint64_t> codeSizes;  ///< bytes of each document's occurrences
};

/// Merges the terms of all analyzers and inverts the documents, with one thread for each analyzer.
/// The outcome depends on documents and terms alone. The codes of the analyzers are dropped as soon
/// as they have been read. `someUnused`: analyzers may hold terms that no document has.
TextSections mergeTexts(const std::vector<PendingDocument>& documents,
                        std::vector<std::unique_ptr<TextAnalyzer>>& analyzers, bool someUnused);

}  // namespace quorvex
