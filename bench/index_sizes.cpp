// Prints the sizes of an index file's entries and of the sections of its full-text and semantic
// indexes, both raw and compressed separately.

#include <cstdio>
#include <string>

#include "common/cbor.h"
#include "fulltext/format/index_format.h"
#include "indexfile/index_file_reader.h"
#include "indexfile/keys.h"
#include "platform/compression.h"
#include "semantic/format/index_format.h"

namespace {

using namespace quorvex;

std::size_t compressedSize(std::string_view bytes) {
  std::size_t size = 0;
  Compressor compressor(bytes.size(), [&size](std::string_view piece) {
    size += piece.size();
    return true;
  });
  return compressor.write(bytes) && compressor.finish() ? size : 0;
}

void print(const std::string& name, std::string_view bytes) {
  std::printf("| %s | %zu | %zu |\n", name.c_str(), bytes.size(), compressedSize(bytes));
}

void printFullText(std::string_view bytes) {
  static constexpr const char* names[] = {"analysis", "documents", "urls",         "properties",
                                          "terms",    "postings",  "frequencies",  "occurrences",
                                          "places",   "names",     "traits",       "operators",
                                          "codes",    "titles",    "joined terms", "place names"};
  const auto sections = takeApart(bytes, indexContainer);
  if (!sections) return;
  for (std::size_t i = 0; i < sections->size(); ++i) {
    print(std::string("TSI_INDEX_DATA: ") + names[i], (*sections)[i]);
  }
  const auto positions = static_cast<std::size_t>(IndexSection::occurrences) - 1;
  std::printf("| TSI_INDEX_DATA without positions | | %zu |\n",
              compressedSize(bytes) - compressedSize((*sections)[positions]));
}

void printSemantic(std::string_view bytes) {
  static constexpr const char* names[] = {"info",   "attributes", "excluded", "names",    "details",
                                          "scales", "vectors",    "terms",    "postings", "counts"};
  const auto sections = takeApart(bytes, docuvault::indexContainer);
  if (!sections) return;
  for (std::size_t i = 0; i < sections->size(); ++i) {
    print(std::string("RDXIndexData: ") + names[i], (*sections)[i]);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: index_sizes FILE\n");
    return 2;
  }
  const Result<DecompressedFile> file = decompressFile(arguments[1]);
  if (!file || !file->content) return 1;
  const Result<Dictionary> index = readIndexDictionary(*file->content, file->limits);
  if (!index) return 1;
  std::printf("| part | bytes | compressed alone |\n|---|---:|---:|\n");
  for (const auto& [key, value] : *index) {
    std::string encoded;
    CborWriter writer([&encoded](std::string_view piece) {
      encoded += piece;
      return true;
    });
    writer.value(value);
    if (!writer.finish()) return 1;
    print(key, encoded);
    if (key == fullTextIndexKey && value.data() != nullptr) printFullText(value.data()->bytes());
    if (key == semanticIndexKey && value.data() != nullptr) printSemantic(value.data()->bytes());
  }
  return 0;
}
