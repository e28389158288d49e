#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/value.h"
#include "fulltext/document.h"
#include "fulltext/writing/text_analyzer.h"
#include "platform/textsift.h"

namespace quorvex {

/// A document's content, found before its document is placed.
struct TSAnalyzedContent {
  unsigned analyzer = 0;                  ///< number of the one with its terms and operators
  std::optional<std::string> properties;  ///< entries as key text, value text
  TSPlaces places;                        ///< begin at codes instead of bytes
  std::optional<TSPageTraits> traits;
  AnalyzedText text;
};

/// A document of an index under construction.
struct PendingDocument {
  std::string url;
  std::uint32_t parentDistance = 0;       ///< 0: top level
  bool holdsText = false;                 ///< else it exists only for its children
  std::optional<std::string> properties;  ///< entries as key text, value text
  TSPlaces places;                        ///< begin at codes instead of bytes
  unsigned analyzer = 0;                  ///< number of the analyzer with its codes
  std::optional<TSPageTraits> traits;
  AnalyzedText text;
};

/// Collects documents and writes them as an index. Keeps texts as term numbers, a little over a
/// byte per word. Not thread-safe except for createAnalysis().
class IndexWriter {
 public:
  IndexWriter(AnalysisSettings settings, std::string analysisSection);

  bool addText(const DocumentRef& document, std::string_view text, bool mayReplace);
  std::vector<bool> addAll(const std::vector<DocumentRef>& documents, bool mayReplace,
                           unsigned workers,
                           const std::function<TSDocumentContent(std::size_t)>& contentOf);
  bool setProperties(const DocumentRef& document, const Dictionary& properties);
  std::optional<std::uint32_t> idOf(const DocumentRef& document) const;

  std::unique_ptr<TSAnalysis> createAnalysis();

  /// Writes the index. The writer must not be used afterwards.
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
  std::mutex _startOfAnalyzers;
  // Either leaves terms behind that no document has.
  bool _replaced = false;
  std::atomic<std::size_t> _unplaced = 0;  ///< contents that are analysed but not yet a document's
};

}  // namespace quorvex
