#include "view/index/index_making.h"

#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "common/locale.h"
#include "common/url.h"
#include "common/value.h"
#include "extract/index_settings.h"
#include "generate/index_file_generator.h"
#include "generate/stop_words.h"
#include "indexfile/index_file_writer.h"
#include "sources/indexable_directory.h"
#include "view/index/book_language.h"

namespace quorvex::view {

namespace {

/// Pages that were listed before, when the book's fingerprint was taken.
class ListedPages : public QXIndexableDirectory {
 public:
  ListedPages(const std::string& folder, std::vector<std::string> subpaths)
      : QXIndexableDirectory(*URL::parse(percentEncodePath(folder))),
        _subpaths(std::move(subpaths)) {}

  std::optional<std::vector<std::string>> subpaths() override { return _subpaths; }

 private:
  std::vector<std::string> _subpaths;
};

/// As `quorvex -C -I lsm -l LANGUAGE -s LANGUAGE` would index it. Without the stop words, the
/// places and quotations for a question in prose would be those with most of its "how", "do" and
/// "a".
IndexSettings settingsFor(const Locale& language, std::function<void()> betweenPages) {
  IndexSettings settings;
  settings.outputIndexTypes = fullTextIndex | semanticIndex;
  settings.indexLocale = language;
  settings.stopwords = stopWords(language.language());
  settings.betweenPages = std::move(betweenPages);
  return settings;
}

}  // namespace

Result<std::string> makeIndex(const std::string& folder, std::vector<std::string> subpaths,
                              std::function<void()> betweenPages) {
  const Locale language = languageOfBook(folder, subpaths);
  std::optional<Dictionary> index;
  {
    const auto generator = std::make_shared<QXIndexFileGenerator>(
        std::make_shared<ListedPages>(folder, std::move(subpaths)),
        settingsFor(language, std::move(betweenPages)));
    index = generator->generateIndex();
  }  // frees the pages' records
  if (!index) return Error{"There is not enough memory to make an index"};
  std::string bytes;
  const Result<IndexFileOutcome> outcome = compressIndex(*index, [&](std::string_view piece) {
    bytes += piece;
    return true;
  });
  if (!outcome) return outcome.error();
  if (*outcome != IndexFileOutcome::written) return Error{"The index cannot be compressed"};
  return bytes;
}

}  // namespace quorvex::view
