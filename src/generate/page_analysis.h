#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "common/idle_pool.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"
#include "generate/full_text_index.h"
#include "platform/docuvault.h"
#include "platform/textsift.h"

namespace quorvex {

/// The full-text and the semantic index of a run while its pages are parsed. Each page's text is
/// cut into words once, for both, on the thread that has parsed it; then it is freed.
class PageAnalysis {
 public:
  /// Starts the indexes that the settings name.
  explicit PageAnalysis(const IndexSettings& settings);

  /// Leaves in the record what the indexes take from it. Frees the content, unless the run needs it
  /// once more. Thread-safe.
  void analyze(QXParsedDocument& document);

  const FullTextIndex& fullText() const { return *_fullText; }
  HelpRDXIndexBuilder* semantic() const { return _semantic.get(); }

 private:
  struct Worker {
    std::unique_ptr<TSAnalysis> fullText;
    std::unique_ptr<HelpArticleAnalysis> semantic;
  };

  std::unique_ptr<Worker> startWorker();
  void analyze(Worker& worker, QXParsedDocument& document) const;

  const IndexSettings& _settings;
  std::optional<FullTextIndex> _fullText;
  std::unique_ptr<HelpRDXIndexBuilder> _semantic;
  std::mutex _start;
  IdlePool<Worker> _idle;
};

}  // namespace quorvex
