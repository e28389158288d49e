#include "reader/items_index.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/beacon/searchable_item.h"
#include "platform/textsift/textsift.h"
#include "reader/page_path.h"

namespace quorvex::reader {

namespace {

constexpr std::string_view pathKey = "_kQRItemHelpPath";
constexpr std::string_view titleKey = "_kQRItemHelpTitle";
constexpr std::string_view summaryKey = "_kQRItemHelpSummary";
constexpr std::string_view tagsKey = "_kQRItemHelpTags";

/// As the full-text index of a file has them.
constexpr const char* termCharacters = "'\u2019";

std::string textAttribute(const BCSearchableItemAttributeSet& attributes, std::string_view key) {
  const Value* value = attributes.attributeForKey(key);
  return value != nullptr && value->string() != nullptr ? *value->string() : std::string();
}

TSDocumentContent contentOf(const BCSearchableItemAttributeSet& attributes) {
  return {
      .text = attributes.textContent().value_or(std::string()),
      .properties = {{"T", textAttribute(attributes, titleKey)},
                     {"D", textAttribute(attributes, summaryKey)}},
  };
}

void addAnchors(const BCSearchableItemAttributeSet& attributes, Dictionary& anchors) {
  const Value* tags = attributes.attributeForKey(tagsKey);
  if (tags == nullptr || tags->array() == nullptr) return;
  const std::string path = splitPagePath(textAttribute(attributes, pathKey)).path;
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
    const std::optional<URL> url = URL::fileURL(textAttribute(item->attributeSet(), pathKey));
    if (!url) continue;
    pages.push_back(&item->attributeSet());
    documents.push_back(TSDocumentCreateWithURL(*url));
    addAnchors(item->attributeSet(), result.anchors);
  }
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef index = TSIndexCreateWithMutableData(
      buffer, std::nullopt, TSIndexType::inverted,
      {{std::string(kTSMinTermLength), 1}, {std::string(kTSTermChars), termCharacters}});
  const unsigned workers = std::max(1U, std::thread::hardware_concurrency());
  TSIndexAddDocuments(index, documents, false, workers,
                      [&](std::size_t i) { return contentOf(*pages[i]); });
  TSIndexClose(index);
  result.fullText = Data(std::move(*buffer));
  return result;
}

}  // namespace quorvex::reader
