#include "generate/page_analysis.h"

#include <utility>

#include "common/log.h"
#include "generate/semantic_index.h"

namespace quorvex {

PageAnalysis::PageAnalysis(const IndexSettings& settings) : _settings(settings) {
  if ((settings.outputIndexTypes & fullTextIndex) != 0) _fullText.emplace(settings);
  if ((settings.outputIndexTypes & semanticIndex) != 0) _semantic = startSemanticIndex(settings);
}

void PageAnalysis::analyze(QXParsedDocument& document) {
  if (!_fullText && _semantic == nullptr) return;
  std::unique_ptr<Worker> worker = _idle.take([this] { return startWorker(); });
  analyze(*worker, document);
  _idle.giveBack(std::move(worker));
  const bool isNeeded = (_settings.outputIndexTypes & searchableItems) != 0 || logs(3);
  if (!isNeeded) document.dropContent();
}

std::unique_ptr<PageAnalysis::Worker> PageAnalysis::startWorker() {
  auto worker = std::make_unique<Worker>();
  // Both on the same one of several threads.
  const std::lock_guard lock(_start);
  if (_fullText) worker->fullText = TSIndexCreateAnalysis(_fullText->index);
  if (_semantic != nullptr) worker->semantic = _semantic->createAnalysis();
  return worker;
}

void PageAnalysis::analyze(Worker& worker, QXParsedDocument& document) const {
  std::optional<TextWords> words;
  if (worker.fullText != nullptr) {
    const std::size_t begin = document.contentOffset();
    TSDocumentContent content = documentContent(document, _settings);
    const bool hasContent = begin <= content.text.size();
    document.analysis().fullText = worker.fullText->analyze(std::move(content), begin);
    if (hasContent) words = worker.fullText->words();
  }
  if (worker.semantic != nullptr) {
    const HelpArticle article = helpArticle(document, _settings, !words);
    document.analysis().article = worker.semantic->analyze(article, words ? &*words : nullptr);
  }
}

}  // namespace quorvex
