#include "cli/create_driver.h"

#include <memory>
#include <new>

#include "cli/index_container.h"
#include "cli/stop_words.h"
#include "common/log.h"
#include "common/memory_shortage.h"
#include "generate/index_file_generator.h"
#include "indexfile/keys.h"
#include "sources/indexable_directory.h"
#include "sources/indexable_help_book_description.h"

namespace quorvex {

namespace {

std::shared_ptr<QXIndexable> pageSource(const Options& options, const std::string& directory) {
  if (options.externalDescription != nullptr) {
    return std::make_shared<QXIndexableHelpBookDescription>(options.externalDescription);
  }
  // An absolute path without the characters that end one is always a URL.
  return std::make_shared<QXIndexableDirectory>(*URL::parse(percentEncodePath(directory)));
}

std::uint64_t outputIndexTypes(const Options& options) {
  if (options.indexFormat == IndexFormat::beacon) return searchableItems;
  return options.appendRDXOnly ? fullTextIndex : fullTextIndex | semanticIndex;
}

void configure(QXIndexFileGenerator& generator, const Options& options) {
  if (options.remoteURL) {
    generator.setUseRemoteRoot(true);
    generator.setRemoteRoot(options.remoteURL);
  }
  generator.setMinimumTermLength(options.minimumTermLength);
  generator.setGenerateSummaries(options.generateSummaries);
  generator.setIndexAnchors(options.indexAnchors);
  generator.setStopwords(stopWords(options.stopwordsArgument));
  generator.setSendNotifications(options.sendNotifications);
  generator.setOneByOne(options.oneByOne);
  generator.setOutputIndexTypes(outputIndexTypes(options));
  generator.setUseSlowMode(options.loweredPriority);
  generator.setIndexLocale(options.locale);
  generator.addIncludePredicates(options.includePredicates);
  generator.addExcludePredicates(options.excludePredicates);
}

/// The existing file's entries with the new semantic index; null when either is missing.
/// Append-only mode makes no semantic index, so it always ends here with its message.
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
    const auto generator = std::make_shared<QXIndexFileGenerator>(pageSource(options, directory));
    configure(*generator, options);
    index = generator->generateIndex();
  }  // the pages' records are not needed for writing
  // Also what was read before, as the description, may be gone for want of memory.
  if (memoryShortages() > 0) throw std::bad_alloc();
  if (options.appendRDXOnly) index = mergeIntoExistingFile(*std::move(index), options);
  writeIndexFile(index, options.indexFilePath, options.indexFormat);
}

}  // namespace quorvex
