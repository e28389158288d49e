// Writes an index file with the full-text form alone, which no option of the program requests: the
// baseline for the semantic form's time and memory.

#include <cstdio>
#include <memory>

#include "generate/index_file_generator.h"
#include "generate/stop_words.h"
#include "indexfile/index_file_writer.h"
#include "sources/indexable_directory.h"

int main(int argumentCount, char** arguments) {
  using namespace quorvex;
  if (argumentCount != 3) {
    std::fprintf(stderr, "usage: full_text_only FOLDER FILE\n");
    return 2;
  }
  const auto url = URL::parse(percentEncodePath(arguments[1]));
  if (!url) return 1;
  std::optional<Dictionary> index;
  {
    IndexSettings settings;
    settings.stopwords = stopWords("en");
    settings.outputIndexTypes = fullTextIndex;
    const auto source = std::make_shared<QXIndexableDirectory>(*url);
    index = std::make_shared<QXIndexFileGenerator>(source, settings)->generateIndex();
  }
  if (!index) return 1;
  AtomicFile file(arguments[2]);
  const Result<IndexFileOutcome> outcome = writeCompressedIndex(*index, file);
  return outcome && *outcome == IndexFileOutcome::written ? 0 : 1;
}
