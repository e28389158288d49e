#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/locale.h"
#include "common/predicate.h"
#include "common/url.h"

namespace quorvex {

/// The index forms that a file can contain, as bits of outputIndexTypes.
enum IndexType : std::uint64_t { semanticIndex = 1, fullTextIndex = 2, searchableItems = 4 };

/// Stands between two texts of a page, between which the page may show nothing.
inline constexpr char textJoint = '\x1F';

/// How a book is indexed. The front end fills it in; the generator and its operations read it.
struct IndexSettings {
  bool sendNotifications = false;
  bool indexAnchors = false;  ///< has no effect: anchors are always indexed
  bool generateSummaries = false;
  /// The text is to be quoted, not indexed: it has the same words, but textJoint stands for the
  /// blanks between texts, permalinks are left out, and paragraphStarts() is kept.
  bool forQuotation = false;
  bool useRemoteRoot = false;
  /// One operation at a time, and one thread for everything else.
  bool oneByOne = false;
  std::uint64_t outputIndexTypes = 0;
  /// Pauses 10 ms after each queued page and each indexed document.
  bool useSlowMode = false;
  /// Also called there, on any thread. What it throws ends the run.
  std::function<void()> betweenPages;
  std::uint64_t minimumTermLength = 1;  ///< in code points
  std::optional<URL> remoteRoot;
  std::optional<std::set<std::string>> stopwords;
  std::optional<Locale> indexLocale = Locale::current();
  // In the order given.
  std::vector<Predicate> includePredicates;
  std::vector<Predicate> excludePredicates;
};

}  // namespace quorvex
