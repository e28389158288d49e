#pragma once

#include <cstdint>
#include <future>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/locale.h"
#include "common/memory_shortage.h"
#include "common/predicate.h"
#include "common/url.h"
#include "common/value.h"
#include "extract/parse_document_operation.h"
#include "platform/notification_center.h"
#include "platform/operation_queue.h"
#include "sources/indexable.h"

namespace quorvex {

/// The index forms that a file can hold, as bits of outputIndexTypes.
enum IndexType : std::uint64_t { semanticIndex = 1, fullTextIndex = 2, searchableItems = 4 };

using ParsedDocuments = std::vector<std::shared_ptr<QXParsedDocument>>;

/// Drives one index build: filters the source's pages, parses them on its queue, collects their
/// records, posts progress, and builds the forms that were asked for. Made with std::make_shared,
/// configured, and run once, all on one thread; completed() comes from the queue's threads.
class QXIndexFileGenerator : public QXParseDocumentManager,
                             public std::enable_shared_from_this<QXIndexFileGenerator> {
 public:
  explicit QXIndexFileGenerator(std::shared_ptr<QXIndexable> indexableDirectory);

  bool sendNotifications() const { return _sendNotifications; }
  void setSendNotifications(bool flag) { _sendNotifications = flag; }
  bool indexAnchors() const { return _indexAnchors; }
  void setIndexAnchors(bool flag) { _indexAnchors = flag; }
  bool generateSummaries() const { return _generateSummaries; }
  void setGenerateSummaries(bool flag) { _generateSummaries = flag; }
  bool useRemoteRoot() const { return _useRemoteRoot; }
  void setUseRemoteRoot(bool flag) { _useRemoteRoot = flag; }
  /// One operation at a time, and one thread for everything else.
  bool oneByOne() const { return _oneByOne; }
  void setOneByOne(bool flag) { _oneByOne = flag; }
  std::uint64_t outputIndexTypes() const { return _outputIndexTypes; }
  void setOutputIndexTypes(std::uint64_t types) { _outputIndexTypes = types; }
  /// Pauses 10 ms after each queued page and each indexed document.
  bool useSlowMode() const { return _useSlowMode; }
  void setUseSlowMode(bool flag) { _useSlowMode = flag; }
  std::uint64_t minimumTermLength() const { return _minimumTermLength; }
  void setMinimumTermLength(std::uint64_t length) { _minimumTermLength = length; }
  const std::optional<URL>& remoteRoot() const { return _remoteRoot; }
  void setRemoteRoot(std::optional<URL> url) { _remoteRoot = std::move(url); }
  const std::optional<std::set<std::string>>& stopwords() const { return _stopwords; }
  void setStopwords(std::optional<std::set<std::string>> words) { _stopwords = std::move(words); }
  const std::optional<Locale>& indexLocale() const { return _indexLocale; }
  void setIndexLocale(std::optional<Locale> locale) { _indexLocale = std::move(locale); }
  /// Where progress goes; the user's session bus unless set.
  void setNotificationCenter(std::shared_ptr<NotificationCenter> center) {
    _notificationCenter = std::move(center);
  }

  const std::vector<Predicate>& includePredicates() const { return _includePredicates; }
  void addIncludePredicates(const std::vector<Predicate>& predicates);
  const std::vector<Predicate>& excludePredicates() const { return _excludePredicates; }
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
  bool _sendNotifications = false;
  bool _generateSummaries = false;
  bool _useRemoteRoot = false;
  bool _indexAnchors = false;
  bool _oneByOne = false;
  std::uint64_t _outputIndexTypes = 0;
  bool _useSlowMode = false;
  std::optional<URL> _remoteRoot;
  std::optional<std::set<std::string>> _stopwords;
  std::uint64_t _minimumTermLength = 1;
  std::optional<Locale> _indexLocale = Locale::current();
  std::vector<Predicate> _includePredicates;
  std::vector<Predicate> _excludePredicates;
  double _totalOperations = 0;
  double _completedOperations = 0;
  double _lastPercentCompleted = 0;
  std::shared_ptr<NotificationCenter> _notificationCenter;
  std::optional<std::vector<std::string>> _listedSubpaths;  ///< from the constructor's listing
  std::recursive_mutex _completion;  ///< over the documents and the counts while operations run
  OperationQueue _q;                 ///< last, so that its threads end before the rest goes
};

}  // namespace quorvex
