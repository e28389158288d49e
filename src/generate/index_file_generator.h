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
#include "platform/notification_center.h"
#include "platform/operation_queue.h"
#include "sources/indexable.h"

namespace quorvex {

using ParsedDocuments = std::vector<std::shared_ptr<QXParsedDocument>>;

/// Drives one index build: filters the source's pages, parses them on its queue, collects their
/// records, posts progress, and builds the forms that were asked for. Made with std::make_shared
/// and run once, all on one thread; completed() comes from the queue's threads.
class QXIndexFileGenerator : public QXParseDocumentManager,
                             public std::enable_shared_from_this<QXIndexFileGenerator> {
 public:
  /// The source's own include predicate stands before those of the settings.
  explicit QXIndexFileGenerator(std::shared_ptr<QXIndexable> indexableDirectory,
                                IndexSettings settings = {});

  const IndexSettings& settings() const { return _settings; }
  /// Where progress goes; the user's session bus unless set.
  void setNotificationCenter(std::shared_ptr<NotificationCenter> center) {
    _notificationCenter = std::move(center);
  }

  void addIncludePredicates(const std::vector<Predicate>& predicates);
  void addExcludePredicates(const std::vector<Predicate>& predicates);

  /// Parses every page and gives the top level of the index file: the entries of all forms. Null
  /// when memory was lacking on the way, be it for a single page.
  std::optional<Dictionary> generateIndex();

  void completed(QXParseDocumentOperation& operation) override;

  bool isFinished() const { return _q.operationCount() == 0; }

  /// The subpaths that some include predicate accepts and no exclude predicate does, in byte order.
  /// A predicate that fails makes the source's default predicate alone decide, in the order of the
  /// argument; null when the source has none.
  std::optional<std::vector<std::string>> _filteredSubpaths(
      const std::vector<std::string>& subpaths) const;

  /// The collected records, in the order of their paths once generateIndex is past parsing.
  const ParsedDocuments& documents() const { return _documents; }

 private:
  Result<std::vector<std::string>> selectedSubpaths(const std::vector<std::string>& subpaths) const;
  std::vector<std::string> subpathsToIndex();
  void parsePages(const std::vector<std::string>& subpaths);
  Dictionary makeForms();
  bool lackedMemory() const;
  unsigned workers() const;
  using InfoEntry = std::pair<std::string_view, Value>;
  /// Where there is no memory for it, nothing is posted; such a run has no index to give either.
  void post(const char* name, std::initializer_list<InfoEntry> userInfo = {}) noexcept;

  bool makesFormsSideBySide() const;
  std::future<Dictionary> startSemanticIndex();
  Dictionary _createRDXIndexDictionary();
  Dictionary _createTSIndexDictionary();
  std::optional<Dictionary> _createBeaconIndexDictionary();

  std::size_t _shortagesBefore = memoryShortages();
  std::shared_ptr<QXIndexable> _indexableDir;
  ParsedDocuments _documents;
  IndexSettings _settings;  ///< fixed while operations run
  double _totalOperations = 0;
  double _completedOperations = 0;
  double _lastPercentCompleted = 0;
  std::shared_ptr<NotificationCenter> _notificationCenter;
  std::optional<std::vector<std::string>> _listedSubpaths;  ///< from the constructor's listing
  std::mutex _completion;  ///< over the documents and the counts while operations run
  OperationQueue _q;       ///< last, so that its threads end before the rest goes
};

}  // namespace quorvex
