#pragma once

#include <cstdint>
#include <future>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/memory_shortage.h"
#include "common/predicate.h"
#include "common/value.h"
#include "extract/index_settings.h"
#include "extract/parse_document_operation.h"
#include "generate/page_analysis.h"
#include "platform/notification_center.h"
#include "platform/operation_queue.h"
#include "sources/indexable.h"

namespace quorvex {

using ParsedDocuments = std::vector<std::shared_ptr<QXParsedDocument>>;

/// Runs one index build: filters the source's pages, parses them on its queue, collects their
/// records, posts progress, and builds the requested forms. Created with std::make_shared and run
/// once, all on one thread; completed() is called on the queue's threads.
class QXIndexFileGenerator : public QXParseDocumentManager,
                             public std::enable_shared_from_this<QXIndexFileGenerator> {
 public:
  /// Puts the source's own include predicate before those of the settings.
  explicit QXIndexFileGenerator(std::shared_ptr<QXIndexable> indexableDirectory,
                                IndexSettings settings = {});

  /// Must not change once generateIndex() has been called.
  IndexSettings& settings() { return _settings; }
  /// Where progress goes; by default the user's session bus.
  void setNotificationCenter(std::shared_ptr<NotificationCenter> center) {
    _notificationCenter = std::move(center);
  }

  void addIncludePredicates(const std::vector<Predicate>& predicates);
  void addExcludePredicates(const std::vector<Predicate>& predicates);

  /// Parses every page and returns the top level of the index file: the entries of all forms. Null
  /// if memory ran out, even for a single page.
  std::optional<Dictionary> generateIndex();

  void parsed(QXParsedDocument& document) override;
  void completed(QXParseDocumentOperation& operation) override;

  bool isFinished() const { return _q.operationCount() == 0; }

  /// Returns the subpaths that match an include and no exclude predicate, in byte order. If a
  /// predicate fails, only the source's default predicate decides, and the argument's order is
  /// kept; null when the source has none.
  std::optional<std::vector<std::string>> _filteredSubpaths(
      const std::vector<std::string>& subpaths) const;

  /// The collected records, sorted by path once generateIndex has parsed all pages.
  const ParsedDocuments& documents() const { return _documents; }

 private:
  Result<std::vector<std::string>> selectedSubpaths(const std::vector<std::string>& subpaths) const;
  std::vector<std::string> subpathsToIndex();
  void parsePages(const std::vector<std::string>& subpaths);
  Dictionary makeForms();
  bool lackedMemory() const;
  unsigned workers() const;
  using InfoEntry = std::pair<std::string_view, Value>;
  /// Posts nothing if memory runs out; such a run returns no index either.
  void post(const char* name, std::initializer_list<InfoEntry> userInfo = {}) noexcept;

  bool makesFormsSideBySide() const;
  std::future<Dictionary> startSemanticIndex();
  Dictionary _createRDXIndexDictionary();
  Dictionary _createTSIndexDictionary();
  std::optional<Dictionary> _createBeaconIndexDictionary();

  std::size_t _shortagesBefore = memoryShortages();
  std::shared_ptr<QXIndexable> _indexableDir;
  std::optional<PageAnalysis> _analysis;  ///< from the start of generateIndex
  ParsedDocuments _documents;
  IndexSettings _settings;
  double _totalOperations = 0;
  double _completedOperations = 0;
  double _lastPercentCompleted = 0;
  std::shared_ptr<NotificationCenter> _notificationCenter;
  std::optional<std::vector<std::string>> _listedSubpaths;  ///< from the constructor's listing
  std::mutex _completion;  ///< guards the documents and the counts while operations run
  OperationQueue _q;       ///< last, so that its threads end first
};

}  // namespace quorvex
