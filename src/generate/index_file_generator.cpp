#include "generate/index_file_generator.h"

#include <algorithm>
#include <exception>
#include <future>

#include <unistd.h>

#include "common/format.h"
#include "common/log.h"
#include "common/memory_shortage.h"
#include "common/parallel.h"
#include "extract/page_tree.h"
#include "generate/between_pages.h"
#include "generate/full_text_index.h"
#include "generate/run_notifications.h"
#include "generate/searchable_items.h"
#include "generate/semantic_index.h"

namespace quorvex {

namespace {

/// Bytes of pages read ahead of the threads. Enough to keep two threads busy, but few enough for
/// a book larger than the spare memory.
constexpr std::size_t maximumBacklog = 8 * 1024 * 1024;

Array valuesOf(const std::vector<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

}  // namespace

QXIndexFileGenerator::QXIndexFileGenerator(std::shared_ptr<QXIndexable> indexableDirectory,
                                           IndexSettings settings)
    : _indexableDir(std::move(indexableDirectory)),
      _settings(std::move(settings)),
      _q(maximumBacklog) {
  _listedSubpaths = _indexableDir->subpaths();
  std::vector<Predicate>& includes = _settings.includePredicates;
  if (const auto predicate = _indexableDir->defaultIncludePredicate()) {
    includes.insert(includes.begin(), *predicate);
  }
}

void QXIndexFileGenerator::addIncludePredicates(const std::vector<Predicate>& predicates) {
  std::ranges::copy(predicates, std::back_inserter(_settings.includePredicates));
}

void QXIndexFileGenerator::addExcludePredicates(const std::vector<Predicate>& predicates) {
  std::ranges::copy(predicates, std::back_inserter(_settings.excludePredicates));
}

unsigned QXIndexFileGenerator::workers() const {
  return _q.maxConcurrentOperationCount();
}

std::optional<Dictionary> QXIndexFileGenerator::generateIndex() {
  if (_settings.oneByOne) _q.setMaxConcurrentOperationCount(1);
  const std::optional<URL> base = _indexableDir->baseURL();
  QXLog(3, "Generating index at path: %@",
        base ? std::optional(base->path()) : std::optional<std::string>());
  const std::vector<std::string> subpaths = subpathsToIndex();
  if (logs(4)) QXLog(4, "Indexing these subpaths: %@", describe(valuesOf(subpaths)));

  _analysis.emplace(_settings);
  _totalOperations = static_cast<double>(subpaths.size());
  if (!subpaths.empty()) {
    post(runBegins, {{operationCountKey, static_cast<std::int64_t>(subpaths.size())}});
  }
  parsePages(subpaths);
  PageTree::releaseSpareMemory();
  std::ranges::sort(_documents, {},
                    [](const auto& document) -> const std::string& { return document->path(); });
  std::optional<Dictionary> index;
  if (!lackedMemory()) index = makeForms();
  post(runEnds);
  // The forms may lack pages or words.
  return lackedMemory() ? std::nullopt : std::move(index);
}

Dictionary QXIndexFileGenerator::makeForms() {
  Dictionary index;
  // A later form's entry replaces an earlier one under the same key.
  const auto merge = [&index](Dictionary form) {
    form.merge(index);
    index = std::move(form);
  };
  std::future<Dictionary> semantic;
  if ((_settings.outputIndexTypes & semanticIndex) != 0) semantic = startSemanticIndex();
  Dictionary fullText;
  if ((_settings.outputIndexTypes & fullTextIndex) != 0) fullText = _createTSIndexDictionary();
  if (semantic.valid()) merge(semantic.get());
  merge(std::move(fullText));
  if ((_settings.outputIndexTypes & searchableItems) != 0) {
    if (auto items = _createBeaconIndexDictionary()) merge(*std::move(items));
  }
  return index;
}

bool QXIndexFileGenerator::lackedMemory() const {
  return memoryShortages() != _shortagesBefore;
}

std::vector<std::string> QXIndexFileGenerator::subpathsToIndex() {
  // Retries a failed listing, which also logs the reason again.
  if (!_listedSubpaths) _listedSubpaths = _indexableDir->subpaths();
  const std::vector<std::string> listed =
      std::exchange(_listedSubpaths, std::nullopt).value_or(std::vector<std::string>());
  return _filteredSubpaths(listed).value_or(std::vector<std::string>());
}

void QXIndexFileGenerator::parsePages(const std::vector<std::string>& subpaths) {
  // Operations own the generator. Even after an exception, none may be left to destroy it: the
  // queue would then wait for the thread it is on.
  const std::unique_ptr<OperationQueue, void (*)(OperationQueue*)> untilFinished(
      &_q, [](OperationQueue* queue) { queue->waitUntilAllOperationsAreFinished(); });
  const std::uint64_t format = (_settings.outputIndexTypes & searchableItems) != 0 ? 4 : 2;
  _documents.reserve(subpaths.size());  // so that completed() allocates nothing
  for (const std::string& subpath : subpaths) {
    if (lackedMemory()) return;
    std::optional<Data> contents = _indexableDir->contentsOfSubpath(subpath);
    if (!contents) {
      QXLog(0, "-[QXIndexFileGenerator init]: data was nil for path: %@", subpath);
      continue;
    }
    const std::size_t size = contents->size();
    auto operation = std::make_shared<QXParseDocumentOperation>(*std::move(contents), subpath,
                                                                format, _settings);
    operation->manager = shared_from_this();
    _q.add(std::move(operation), size);
    betweenPages(_settings);
  }
}

void QXIndexFileGenerator::parsed(QXParsedDocument& document) {
  _analysis->analyze(document);
}

void QXIndexFileGenerator::completed(QXParseDocumentOperation& operation) {
  const std::scoped_lock lock(_completion);
  _completedOperations += 1.0;
  for (std::shared_ptr<QXParsedDocument>& document : operation.documents()) {
    _documents.push_back(std::move(document));
  }
  if (!_settings.sendNotifications) return;
  constexpr double smallestStep = 0.05;
  const double fraction = _completedOperations / _totalOperations;
  if (fraction - _lastPercentCompleted > smallestStep) {
    _lastPercentCompleted = fraction;
    post(runAdvances, {{percentCompletedKey, fraction}});
  }
}

Result<std::vector<std::string>> QXIndexFileGenerator::selectedSubpaths(
    const std::vector<std::string>& subpaths) const {
  const std::set<std::string_view> all(subpaths.begin(), subpaths.end());
  std::set<std::string_view> selected;
  for (const Predicate& predicate : _settings.includePredicates) {
    for (const std::string_view subpath : all) {
      const Result<bool> accepted = predicate.evaluate(subpath);
      if (!accepted) return accepted.error();
      if (*accepted) selected.insert(subpath);
    }
  }
  for (const Predicate& predicate : _settings.excludePredicates) {
    // All are evaluated, not only the selected: a bad pattern fails on any non-empty book.
    for (const std::string_view subpath : all) {
      const Result<bool> rejected = predicate.evaluate(subpath);
      if (!rejected) return rejected.error();
      if (*rejected) selected.erase(subpath);
    }
  }
  return std::vector<std::string>(selected.begin(), selected.end());
}

std::optional<std::vector<std::string>> QXIndexFileGenerator::_filteredSubpaths(
    const std::vector<std::string>& subpaths) const {
  Result<std::vector<std::string>> selected = selectedSubpaths(subpaths);
  if (selected) return *std::move(selected);
  const std::optional<Predicate> builtIn = _indexableDir->defaultIncludePredicate();
  if (!builtIn) return std::nullopt;
  QXLog(1, "Filtering based on regex predicates failed: %@", selected.error());
  QXLog(1, "Continuing to index with built-in filter");
  std::vector<std::string> accepted;
  std::ranges::copy_if(subpaths, std::back_inserter(accepted), [&](const std::string& subpath) {
    const Result<bool> matches = builtIn->evaluate(subpath);
    return matches && *matches;
  });
  return accepted;
}

void QXIndexFileGenerator::post(const char* name,
                                std::initializer_list<InfoEntry> userInfo) noexcept {
  if (!_settings.sendNotifications) return;
  try {
    Dictionary info;
    for (const auto& [key, value] : userInfo)
      info.emplace(key, value);
    if (_notificationCenter == nullptr) _notificationCenter = distributedNotificationCenter();
    _notificationCenter->post({name, std::to_string(::getpid()), std::move(info)});
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): there is no memory for it
  }
}

Dictionary QXIndexFileGenerator::_createRDXIndexDictionary() {
  const unsigned readers = makesFormsSideBySide() ? workers() / 2 : workers();
  return createSemanticIndex(_documents, _settings, {.reading = readers, .computing = workers()},
                             _analysis->semantic());
}

Dictionary QXIndexFileGenerator::_createTSIndexDictionary() {
  const unsigned readers = makesFormsSideBySide() ? (workers() + 1) / 2 : workers();
  return createFullTextIndex(_documents, _settings, readers, _analysis->fullText());
}

/// Each form alone leaves threads idle for a while. Off where the messages of one form would mix
/// with the other's.
bool QXIndexFileGenerator::makesFormsSideBySide() const {
  constexpr std::uint64_t both = semanticIndex | fullTextIndex;
  return (_settings.outputIndexTypes & both) == both && workers() > 1 && !_settings.useSlowMode &&
         !logs(3);
}

std::future<Dictionary> QXIndexFileGenerator::startSemanticIndex() {
  const auto make = [this] { return _createRDXIndexDictionary(); };
  if (makesFormsSideBySide()) return inBackground(make);
  std::future<Dictionary> index = std::async(std::launch::deferred, make);
  index.wait();
  return index;
}

std::optional<Dictionary> QXIndexFileGenerator::_createBeaconIndexDictionary() {
  return createBeaconIndexDictionary(_documents, _settings.generateSummaries);
}

}  // namespace quorvex
