#include "cli/create_driver.h"

#include <memory>
#include <new>

#include "cli/index_container.h"
#include "common/log.h"
#include "common/memory_shortage.h"
#include "generate/index_file_generator.h"
#include "generate/stop_words.h"
#include "indexfile/keys.h"
#include "sources/indexable_directory.h"
#include "sources/indexable_help_book_description.h"

namespace quorvex {

namespace {

std::shared_ptr<QXIndexable> pageSource(const Options& options, const std::string& directory) {
  if (options.externalDescription != nullptr) {
    return std::make_shared<QXIndexableHelpBookDescription>(options.externalDescription);
  }
  // A percent-encoded absolute path is always a valid URL.
  return std::make_shared<QXIndexableDirectory>(*URL::parse(percentEncodePath(directory)));
}

std::uint64_t outputIndexTypes(const Options& options) {
  if (options.indexFormat == IndexFormat::beacon) return searchableItems;
  return options.appendRDXOnly ? fullTextIndex : fullTextIndex | semanticIndex;
}

IndexSettings indexSettings(const Options& options) {
  auto settings = static_cast<const IndexSettings&>(options);
  settings.useRemoteRoot = options.remoteURL.has_value();
  settings.remoteRoot = options.remoteURL;
  settings.outputIndexTypes = outputIndexTypes(options);
  settings.useSlowMode = options.loweredPriority;
  settings.indexLocale = options.locale;
  return settings;
}

/// Returns the existing entries with the new semantic index; null when either is missing.
/// Append-only mode builds no semantic index, so it always fails here with the message.
std::optional<Dictionary> mergeIntoExistingFile(Dictionary generated, const Options& options) {
  std::optional<Dictionary> existing =
      readIndexFileForCreate(options.indexFilePath, options.indexFormat);
  auto semantic = generated.extract(std::string(semanticIndexKey));
  if (existing && !semantic.empty()) {
    existing->insert_or_assign(std::string(semanticIndexKey), std::move(semantic.mapped()));
    return existing;
  }
  QXLog(1, "Error adding RDX index data to <%@>", options.indexFilePath);
  return std::nullopt;
}

}  // namespace

void runCreate(const Options& options, const std::string& directory) {
  std::optional<Dictionary> index;
  {
    const auto generator = std::make_shared<QXIndexFileGenerator>(pageSource(options, directory),
                                                                  indexSettings(options));
    // Only now: messages about the book come before those about stop words.
    generator->settings().stopwords = stopWords(options.stopwordsArgument);
    index = generator->generateIndex();
  }  // frees the page records before writing
  // Earlier input, such as the description, may also be incomplete.
  if (memoryShortages() > 0) throw std::bad_alloc();
  if (options.appendRDXOnly) index = mergeIntoExistingFile(*std::move(index), options);
  writeIndexFile(index, options.indexFilePath, options.indexFormat);
}

}  // namespace quorvex
