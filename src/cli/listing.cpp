#include "cli/listing.h"

#include <vector>

#include "common/format.h"
#include "common/unicode.h"
#include "indexfile/keys.h"
#include "platform/docuvault.h"

namespace quorvex {

Status listIndex(const Dictionary& index, ListMode mode, bool verbose, IndexFormat format) {
  TextOutput output;
  switch (format) {
    case IndexFormat::lsm:
      listFullTextIndex(output, index, mode, verbose);
      break;
    case IndexFormat::beacon:
      listSearchableItems(output, index, mode, verbose);
      break;
    case IndexFormat::none:
      break;
  }
  return output.finish();
}

void printRDXSummary(TextOutput& output, const Dictionary& index) {
  const Value* data = find(index, semanticIndexKey);
  if (data == nullptr || data->data() == nullptr) {
    output << "Index file does not contain RDX data";
  } else if (const auto rdx = HelpRDXIndex::HelpRDXIndexWithVersionedData(*data->data())) {
    output << rdx->description();
  }
}

std::string listedText(const Value* value) {
  return value != nullptr ? describe(*value) : std::string(nullText);
}

void printAnchorNames(TextOutput& output, const Dictionary& anchors) {
  std::vector<std::string> names;
  names.reserve(anchors.size());
  for (const auto& [name, paths] : anchors)
    names.push_back(name);
  sortCaseInsensitively(names);
  for (std::size_t i = 0; i < names.size(); ++i)
    output << (i == 0 ? "" : "\n") << names[i];
  output << "\n";
}

void printTitleAndDescription(TextOutput& output, std::string_view title,
                              std::string_view description) {
  output << "    Title: " << title << "\n    Descr: " << description << "\n";
}

}  // namespace quorvex
