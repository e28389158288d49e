#include "platform/beacon/searchable_item.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using AttributeSet = BCSearchableItemAttributeSet;

std::shared_ptr<AttributeSet> fullSet() {
  auto set = std::make_shared<AttributeSet>("com.example.topic");
  set->setDisplayName("Intro");
  set->setKeywords(std::vector<std::string>{"a", ""});
  set->setTextContent("text");
  set->setContentDescription("");
  set->setAttribute(Array{"one", "two"}, "tags");
  set->setAttribute("/a.html", "path");
  return set;
}

TEST(SearchableItem, SurvivesItsArchiveForm) {
  const auto item = std::make_shared<BCSearchableItem>("id", std::nullopt, fullSet());
  Dictionary fields = item->archivedFields();
  const auto set =
      AttributeSet::fromArchivedFields((*fields.at("attributeSet").object())->archivedFields());
  ASSERT_TRUE(set.ok()) << set.error().description;
  fields.at("attributeSet") = *set;
  const auto read = BCSearchableItem::fromArchivedFields(fields);
  ASSERT_TRUE(read.ok()) << read.error().description;
  EXPECT_EQ(Value(Value::Object(item)), Value(*read));
}

TEST(SearchableItem, ClearedFieldsAndAttributesAreAbsent) {
  const auto set = fullSet();
  set->setDisplayName(std::nullopt);
  set->setKeywords(std::nullopt);
  set->setTextContent(std::nullopt);
  set->setContentDescription(std::nullopt);
  set->setAttribute(std::nullopt, "tags");
  set->setAttribute(std::nullopt, "path");
  set->setAttribute(std::nullopt, "never there");
  EXPECT_EQ(set->archivedFields(), (Dictionary{{"contentType", "com.example.topic"}}));
}

TEST(SearchableItem, RefusesWhatIsNotItsArchiveForm) {
  const Value::Object set = fullSet();
  const struct {
    const char* field;
    Value value;
  } badInSet[] = {{"contentType", 1},
                  {"displayName", true},
                  {"keywords", "a"},
                  {"keywords", Array{"a", 1}},
                  {"textContent", Data("x")},
                  {"contentDescription", Dictionary()},
                  {"customAttributes", "x"},
                  {"unknown", "x"},
                  {"customAttributes", Dictionary{{"deep", Array{set}}}}};
  for (const auto& [field, value] : badInSet) {
    Dictionary fields = set->archivedFields();
    fields.insert_or_assign(field, value);
    const auto read = AttributeSet::fromArchivedFields(fields);
    ASSERT_FALSE(read.ok()) << field;
    EXPECT_NE(read.error().description.find(field), std::string::npos);
  }
  EXPECT_FALSE(AttributeSet::fromArchivedFields({}).ok());

  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({}).ok());
  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({{"attributeSet", "x"}}).ok());
  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({{"attributeSet", set}, {"x", 1}}).ok());
  const Value::Object item = std::make_shared<BCSearchableItem>(
      std::nullopt, std::nullopt, std::make_shared<AttributeSet>("x"));
  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({{"attributeSet", item}}).ok());
}

}  // namespace
}  // namespace quorvex
