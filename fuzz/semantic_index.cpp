// Passes a semantic index through every read operation and every kind of query. The mutator changes
// one section and reassembles the index with valid sizes and checksum.

#include "fuzz/driver.h"
#include "platform/docuvault.h"
#include "semantic/format/index_format.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Data data{std::string(fuzz::view(bytes, size))};
  const auto index = HelpRDXIndex::HelpRDXIndexWithVersionedData(data);
  if (index == nullptr) return 0;
  index->description();
  index->objectForAttribute(HelpRDXIndexAttributeIgnoreRDXKey);
  for (const char* text : {"apple cherry", "topic3 fig", "nothing known", ""}) {
    for (const HelpRDXAnswer& answer : index->articlesNearestToText(text, 4)) {
      fuzz::require(answer.similarity > 0 && answer.similarity <= 1);
      index->articlesNearestToArticle(answer.subPath, 4);
    }
  }
  index->articlesNearestToArticle("/page3", 100);
  index->setObject("text", "attribute");
  index->versionedRDXIndexData();
  return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                    unsigned seed) {
  std::optional<docuvault::Sections> sections = docuvault::splitSections(fuzz::view(bytes, size));
  if (!sections || seed % 16 == 0) return LLVMFuzzerMutate(bytes, size, maximum);
  std::string_view& section = (*sections)[seed % sections->size()];
  const std::string changed =
      fuzz::mutated(std::string(section), section.size() + fuzz::roomToGrow);
  section = changed;
  return fuzz::give(docuvault::joinSections(*sections), bytes, maximum);
}
