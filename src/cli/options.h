#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/index_format.h"
#include "common/locale.h"
#include "common/url.h"
#include "common/value.h"
#include "extract/index_settings.h"

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

/// A run as given on the command line. Index settings that the create driver derives still have
/// their defaults.
struct Options : IndexSettings {
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
  bool loweredPriority = false;
  /// A two-letter language code or a path, as given.
  std::optional<std::string> stopwordsArgument;
  std::optional<URL> remoteURL;
  Locale locale = Locale::current();
  /// Null when there is none, or when the last -x could not be read.
  std::shared_ptr<const Dictionary> externalDescription;
};

}  // namespace quorvex
