#include "generate/searchable_items.h"

#include <gtest/gtest.h>

#include "platform/searchable_item.h"

namespace quorvex {
namespace {

using Documents = std::vector<std::shared_ptr<QXParsedDocument>>;

std::shared_ptr<QXParsedDocument> page(bool anchorsOnly, bool keywordsOnly) {
  auto document = std::make_shared<QXParsedDocument>("a.html");
  document->title() = " My\n title ";
  document->keywords() = "k1, k2";
  document->content() = "Body text.";
  document->anchors().add("one");
  document->anchors().add("two");
  document->setFirstAnchor("one");
  document->setIdentifier("id");
  document->setAnchorsOnly(anchorsOnly);
  document->setKeywordsOnly(keywordsOnly);
  return document;
}

/// Returns the archived fields of the items' attribute sets, with custom attributes.
std::vector<Dictionary> attributes(const Documents& documents, bool generateSummaries) {
  const auto dictionary = createBeaconIndexDictionary(documents, generateSummaries);
  EXPECT_EQ(dictionary->size(), 2U);
  EXPECT_EQ(dictionary->at("BC_INDEXABLE_ITEMS_VERSION"), Value("1.0"));
  std::vector<Dictionary> all;
  for (const Value& value : *dictionary->at("BC_INDEXABLE_ITEMS").array()) {
    const auto& item = dynamic_cast<const BCSearchableItem&>(**value.object());
    EXPECT_FALSE(item.uniqueIdentifier() || item.domainIdentifier());
    Dictionary fields = item.attributeSet().archivedFields();
    fields.merge(*fields.at("customAttributes").dictionary());
    fields.erase("customAttributes");
    EXPECT_EQ(fields.extract("contentType").mapped(), Value("com.corvane.help.topic"));
    all.push_back(std::move(fields));
  }
  return all;
}

TEST(SearchableItems, FieldsByRobotsDirective) {
  const Dictionary always{{"_kQRItemHelpIdentifier", "id"},
                          {"_kQRItemHelpPath", "/a.html#one"},
                          {"_kQRItemHelpTitle", "My title"},
                          {"_kQRItemHelpSummary", ""}};
  const std::pair<std::string, Value> tags{"_kQRItemHelpTags", Array{"one", "two"}};
  const std::pair<std::string, Value> keywords{"keywords", Array{"k1", "k2"}};
  Dictionary whole = always;
  whole.insert({tags, keywords, {"displayName", "My title"}, {"contentDescription", ""}});
  whole.insert({"textContent", " k1, k2 Body text."});
  Dictionary anchorsOnly = always;
  anchorsOnly.insert(tags);
  Dictionary keywordsOnly = always;
  keywordsOnly.insert(keywords);

  EXPECT_EQ(attributes({page(false, false), page(true, false), page(false, true), page(true, true)},
                       false),
            (std::vector{whole, anchorsOnly, keywordsOnly, anchorsOnly}));
}

TEST(SearchableItems, AbsentAndGeneratedFields) {
  const auto bare = std::make_shared<QXParsedDocument>("/b.html");
  bare->content() = "Only one sentence stands here.";
  const Dictionary fields = attributes({bare}, true).front();
  EXPECT_EQ(fields.at("contentDescription"), Value("Only one sentence stands here."));
  EXPECT_EQ(fields.at("_kQRItemHelpSummary"), fields.at("contentDescription"));
  EXPECT_EQ(fields.size(), 6U);  // no keywords, no identifier, no tags
  EXPECT_FALSE(createBeaconIndexDictionary({}, true));
}

}  // namespace
}  // namespace quorvex
