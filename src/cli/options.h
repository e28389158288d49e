#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/index_format.h"
#include "common/locale.h"
#include "common/predicate.h"
#include "common/url.h"
#include "common/value.h"

namespace quorvex {

/// What a listing prints.
enum class ListMode {
  none = 0,
  anchors = 1,
  anchorDictionary = 2,
  files = 3,
  fileTerms = 4,
  indexVersions = 5,
  minTermLength = 6,
  remoteURL = 7,  ///< complete, but no option selects it
  stopwords = 8,
  rdxSummary = 9,  ///< complete, but no option selects it
};

/// The settings of one run, as the command line gave them.
struct Options {
  bool create = false;
  bool appendRDXOnly = false;
  ListMode listMode = ListMode::none;
  bool purgeCaches = false;
  bool printVersion = false;
  bool help = false;
  /// An option was unknown, rejected or lacked its argument.
  bool badOption = false;
  IndexFormat indexFormat = IndexFormat::none;
  /// Absolute and standardized.
  std::optional<std::string> indexFilePath;
  bool verbose = false;
  bool indexAnchors = false;
  bool generateSummaries = false;
  bool sendNotifications = false;
  bool oneByOne = false;
  bool loweredPriority = false;
  /// In code points, 1 to 3.
  unsigned minimumTermLength = 1;
  /// A two-letter language code or a path, as given.
  std::optional<std::string> stopwordsArgument;
  std::optional<URL> remoteURL;
  Locale locale = Locale::current();
  // In command-line order.
  std::vector<Predicate> includePredicates;
  std::vector<Predicate> excludePredicates;
  /// Null when there is none, or when the last -x could not be read.
  std::shared_ptr<const Dictionary> externalDescription;
};

}  // namespace quorvex
