// Passes a semantic index through every read operation and every kind of query. The mutator changes
// one section and reassembles the index with valid sizes and checksums; of version 1, it changes
// any bytes.

#include <algorithm>

#include "common/checksum.h"
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
  const std::string copy(fuzz::view(bytes, size));
  if (containerVersion(std::string_view(copy), docuvault::indexMagic) == 1) {
    constexpr std::size_t sumEnd = 32;
    std::string changed = fuzz::mutated(copy, copy.size());
    std::string sum;
    appendU64(sum, checksum(std::string_view(changed).substr(std::min(sumEnd, changed.size()))));
    if (changed.size() >= sumEnd) changed.replace(sumEnd - sum.size(), sum.size(), sum);
    return fuzz::give(changed, bytes, maximum);
  }
  auto sections = takeApart(copy, docuvault::indexContainer);
  if (!sections || seed % 16 == 0) return LLVMFuzzerMutate(bytes, size, maximum);
  std::string& section = (*sections)[seed % sections->size()];
  section = fuzz::mutated(section, section.size() + fuzz::roomToGrow);
  std::string assembled;
  assembleContainer(docuvault::indexContainer, *sections, assembled);
  return fuzz::give(assembled, bytes, maximum);
}
