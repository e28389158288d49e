#include "platform/searchable_item.h"

#include <gtest/gtest.h>

#include "platform/keyed_archive.h"
#include "tests/support/cbor_forms.h"

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
  return set;
}

TEST(SearchableItem, TravelsThroughAnArchive) {
  const Value item(
      Value::Object(std::make_shared<const BCSearchableItem>("id", std::nullopt, fullSet())));
  const std::string bytes = test::keyed(item);
  EXPECT_FALSE(unarchiveKeyed(bytes, AllowedKinds::values()).ok());
  const Result<Value> read = unarchiveKeyed(bytes, valuesAndSearchableItems());
  EXPECT_EQ(*read, item);
}

TEST(SearchableItem, RefusesWhatIsNotItsArchiveForm) {
  const Value::Object set = fullSet();
  const struct {
    const char* field;
    Value value;
  } badInSet[] = {
      {"contentType", 1},         {"keywords", Array{"a", 1}},
      {"textContent", Data("x")}, {"customAttributes", "x"},
      {"unknown", "x"},           {"customAttributes", Dictionary{{"deep", Array{set}}}}};
  for (const auto& [field, value] : badInSet) {
    Dictionary fields = set->archivedFields();
    fields.insert_or_assign(field, value);
    EXPECT_FALSE(AttributeSet::fromArchivedFields(fields).ok()) << field;
  }
  EXPECT_FALSE(AttributeSet::fromArchivedFields({}).ok());
  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({{"attributeSet", "x"}}).ok());
  EXPECT_FALSE(BCSearchableItem::fromArchivedFields({{"attributeSet", set}, {"x", 1}}).ok());
}

}  // namespace
}  // namespace quorvex
