#include <map>

#include <unistd.h>

#include "cli/listing.h"
#include "common/format.h"
#include "indexfile/keys.h"
#include "platform/searchable_item.h"

namespace quorvex {

namespace {

using AttributeSet = BCSearchableItemAttributeSet;

/// Calls `visit` with the attribute set of each item, until it returns false.
template <typename Visitor>
void forEachItem(const Dictionary& index, Visitor visit) {
  const Value* items = find(index, indexableItemsKey);
  if (items == nullptr || items->array() == nullptr) return;
  for (const Value& element : *items->array()) {
    if (element.object() == nullptr) continue;
    const auto* item = dynamic_cast<const BCSearchableItem*>(element.object()->get());
    if (item != nullptr && !visit(item->attributeSet())) return;
  }
}

/// Maps each anchor name to the paths of the items that have it, in item order.
Dictionary anchorDictionary(const Dictionary& index) {
  std::map<std::string, Array, std::less<>> anchors;
  forEachItem(index, [&anchors](const AttributeSet& attributes) {
    const Value* path = attributes.attributeForKey(itemHelpPathKey);
    const Value* tags = attributes.attributeForKey(itemHelpTagsKey);
    if (path == nullptr || tags == nullptr || tags->array() == nullptr) return true;
    for (const Value& tag : *tags->array()) {
      if (const std::string* name = tag.string()) {
        anchors[*name].push_back(*path);
      }
    }
    return true;
  });
  Dictionary dictionary;
  for (auto& [name, paths] : anchors)
    dictionary.emplace(name, std::move(paths));
  return dictionary;
}

std::string_view textOf(const std::optional<std::string>& text) {
  return text ? *text : nullText;
}

void printItem(TextOutput& output, const AttributeSet& attributes, bool withTerms, bool verbose) {
  output << listedText(attributes.attributeForKey(itemHelpPathKey)) << "\n";
  if (verbose) {
    printTitleAndDescription(output, textOf(attributes.displayName()),
                             textOf(attributes.contentDescription()));
  }
  if (!withTerms || !attributes.keywords()) return;
  for (const std::string& keyword : *attributes.keywords()) {
    output << "        " << keyword << "\n";
  }
}

void printItems(TextOutput& output, const Dictionary& index, bool withTerms, bool verbose) {
  forEachItem(index, [&](const AttributeSet& attributes) {
    printItem(output, attributes, withTerms, verbose);
    return !output.failed();
  });
}

}  // namespace

void listSearchableItems(TextOutput& output, const Dictionary& index, ListMode mode, bool verbose) {
  switch (mode) {
    case ListMode::anchors:
      printAnchorNames(output, anchorDictionary(index));
      break;
    case ListMode::anchorDictionary: {
      const Value anchors(anchorDictionary(index));
      output.writeKeyedDocument(&anchors);
      break;
    }
    case ListMode::files:
      printItems(output, index, false, verbose);
      break;
    case ListMode::fileTerms:
      printItems(output, index, true, verbose);
      break;
    case ListMode::indexVersions:
      output.writeKeyedDocument(find(index, indexableItemsVersionKey));
      break;
    default:
      writeFully(STDERR_FILENO, "The specified list mode is not supported by the index format.\n");
  }
}

}  // namespace quorvex
