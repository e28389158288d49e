// Writes an index file with the full-text form alone, which no option of the program requests: the
// baseline for the semantic form's time and memory.

#include <cstdio>
#include <memory>

#include "cli/index_container.h"
#include "cli/stop_words.h"
#include "generate/index_file_generator.h"
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
  return writeIndexFile(index, arguments[2], IndexFormat::lsm) ? 0 : 1;
}
