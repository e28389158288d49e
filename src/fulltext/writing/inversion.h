#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fulltext/format/text_sketch.h"
#include "fulltext/writing/index_writer.h"

namespace quorvex {

/// The sections derived from the texts of all documents.
struct TextSections {
  std::string terms;
  std::string postings;
  std::string frequencies;
  std::string occurrences;
  std::vector<std::uint64_t> codeSizes;  ///< bytes of each document's occurrences
  std::vector<TextSketch> sketches;      ///< of each document
};

/// Merges the terms of all analyzers and inverts the documents, with one thread per analyzer. The
/// result depends only on documents and terms. Drops the documents' codes once they have been read.
/// `someUnused`: analyzers may have terms that no document contains.
TextSections mergeTexts(std::vector<PendingDocument>& documents,
                        std::vector<std::unique_ptr<TextAnalyzer>>& analyzers, bool someUnused);

}  // namespace quorvex
