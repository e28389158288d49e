#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/value.h"
#include "fulltext/document.h"
#include "fulltext/writing/text_analyzer.h"

namespace quorvex {

/// A document while its index is built.
struct PendingDocument {
  std::string url;
  std::uint32_t parentDistance = 0;       ///< 0: top level
  bool holdsText = false;                 ///< else it is there for its children only
  std::optional<std::string> properties;  ///< entries as key text, value text
  unsigned analyzer = 0;                  ///< which one holds its codes
  AnalyzedText text;
};

/// What a document holds.
struct DocumentContent {
  std::string text;
  Dictionary properties;
};

/// Collects documents and writes them as an index. Texts are kept as term numbers, a little over a
/// byte a word. Used by one thread.
class IndexWriter {
 public:
  IndexWriter(AnalysisSettings settings, std::string analysisSection);

  bool addText(const DocumentRef& document, std::string_view text, bool mayReplace);
  std::vector<bool> addAll(const std::vector<DocumentRef>& documents, bool mayReplace,
                           unsigned workers,
                           const std::function<DocumentContent(std::size_t)>& contentOf);
  bool setProperties(const DocumentRef& document, const Dictionary& properties);
  std::optional<std::uint32_t> idOf(const DocumentRef& document) const;

  /// Writes the index. The writer takes nothing more.
  void finish(std::string& out);

 private:
  std::uint32_t place(const TSDocument& document);
  std::optional<std::uint32_t> claim(const DocumentRef& document, bool mayReplace);
  void startAnalyzers(unsigned count);

  AnalysisSettings _settings;
  std::string _analysisSection;
  std::vector<PendingDocument> _documents;
  std::unordered_map<std::string, std::uint32_t> _ids;  ///< by identity
  std::vector<std::unique_ptr<TextAnalyzer>> _analyzers;
  bool _replaced = false;  ///< some codes belong to no document any more
};

}  // namespace quorvex
