#include "generate/searchable_items.h"

#include <string>
#include <utility>

#include "extract/strings.h"
#include "indexfile/keys.h"
#include "platform/searchable_item.h"

namespace quorvex {

namespace {

constexpr const char* itemsVersion = "1.0";

std::optional<Value> valueOf(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  return Value(*text);
}

/// Clears what a search must not find, once title and summary are copied.
void restrict(const QXParsedDocument& document, BCSearchableItemAttributeSet& set) {
  if (!document.anchorsOnly() && !document.keywordsOnly()) return;
  set.setTextContent(std::nullopt);
  set.setDisplayName(std::nullopt);
  set.setContentDescription(std::nullopt);
  if (document.anchorsOnly()) {
    set.setKeywords(std::nullopt);
  } else {
    set.setAttribute(std::nullopt, itemHelpTagsKey);
  }
}

Value itemFor(const QXParsedDocument& document, bool generateSummaries) {
  auto set =
      std::make_shared<BCSearchableItemAttributeSet>(std::string(QXStrings::helpTopicContentType));
  set->setDisplayName(document.preparedTitle());
  set->setKeywords(document.keywordsArray());
  // The text is by far the largest part; it is not made only to be cleared.
  if (!document.anchorsOnly() && !document.keywordsOnly()) set->setTextContent(document.fullText());
  set->setContentDescription(generateSummaries ? document.summaryGeneratedIfNecessary()
                                               : document.summary());
  set->setAttribute(valueOf(document.identifier()), itemHelpIdentifierKey);
  set->setAttribute(document.absolutePathWithFragment(), itemHelpPathKey);
  if (!document.anchors().empty()) {
    set->setAttribute(Array(document.anchors().begin(), document.anchors().end()), itemHelpTagsKey);
  }
  set->setAttribute(valueOf(set->displayName()), itemHelpTitleKey);
  set->setAttribute(valueOf(set->contentDescription()), itemHelpSummaryKey);
  restrict(document, *set);
  return Value::Object(
      std::make_shared<const BCSearchableItem>(std::nullopt, std::nullopt, std::move(set)));
}

}  // namespace

std::optional<Dictionary> createBeaconIndexDictionary(
    std::span<const std::shared_ptr<QXParsedDocument>> documents, bool generateSummaries) {
  if (documents.empty()) return std::nullopt;
  Array items;
  items.reserve(documents.size());
  for (const std::shared_ptr<QXParsedDocument>& document : documents) {
    items.push_back(itemFor(*document, generateSummaries));
  }
  Dictionary dictionary;
  dictionary.emplace(indexableItemsKey, std::move(items));
  dictionary.emplace(indexableItemsVersionKey, itemsVersion);
  return dictionary;
}

}  // namespace quorvex
