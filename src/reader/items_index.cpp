#include "reader/items_index.h"

#include <memory>
#include <string>
#include <vector>

#include "indexfile/keys.h"
#include "platform/operation_queue.h"
#include "platform/searchable_item.h"
#include "platform/textsift.h"
#include "reader/page_path.h"

namespace quorvex::reader {

namespace {

std::string textAttribute(const BCSearchableItemAttributeSet& attributes, std::string_view key) {
  const Value* value = attributes.attributeForKey(key);
  return value != nullptr && value->string() != nullptr ? *value->string() : std::string();
}

TSDocumentContent contentOf(const BCSearchableItemAttributeSet& attributes) {
  return {
      .text = attributes.textContent().value_or(std::string()),
      .properties = {{std::string(titleProperty), textAttribute(attributes, itemHelpTitleKey)},
                     {std::string(descriptionProperty),
                      textAttribute(attributes, itemHelpSummaryKey)}},
  };
}

void addAnchors(const BCSearchableItemAttributeSet& attributes, Dictionary& anchors) {
  const Value* tags = attributes.attributeForKey(itemHelpTagsKey);
  if (tags == nullptr || tags->array() == nullptr) return;
  const std::string path = splitPagePath(textAttribute(attributes, itemHelpPathKey)).path;
  for (const Value& tag : *tags->array()) {
    if (tag.string() == nullptr) continue;
    Value& pages = anchors.try_emplace(*tag.string(), Array()).first->second;
    pages.array()->emplace_back(path);
  }
}

}  // namespace

ItemsIndex indexItems(const Array& items) {
  ItemsIndex result;
  std::vector<const BCSearchableItemAttributeSet*> pages;
  std::vector<TSDocumentRef> documents;
  for (const Value& value : items) {
    const auto* item = value.object() == nullptr
                           ? nullptr
                           : dynamic_cast<const BCSearchableItem*>(value.object()->get());
    if (item == nullptr) continue;
    const std::optional<URL> url =
        URL::fileURL(textAttribute(item->attributeSet(), itemHelpPathKey));
    if (!url) continue;
    pages.push_back(&item->attributeSet());
    documents.push_back(TSDocumentCreateWithURL(*url));
    addAnchors(item->attributeSet(), result.anchors);
  }
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef index = TSIndexCreateWithMutableData(
      buffer, std::nullopt, TSIndexType::inverted,
      {{std::string(kTSMinTermLength), 1}, {std::string(kTSTermChars), contractionMarks}});
  TSIndexAddDocuments(index, documents, false, defaultConcurrency(),
                      [&](std::size_t i) { return contentOf(*pages[i]); });
  TSIndexClose(index);
  result.fullText = Data(std::move(*buffer));
  return result;
}

}  // namespace quorvex::reader
