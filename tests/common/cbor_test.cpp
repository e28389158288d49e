#include "common/cbor.h"

#include <cmath>

#include <gtest/gtest.h>

#include "common/nesting.h"
#include "tests/support/damage.h"

namespace quorvex {
namespace {

using test::fromHex;
using test::repeated;
using test::toHex;

std::string written(const Value& value) {
  std::string bytes;
  CborWriter writer([&bytes](std::string_view piece) {
    bytes += piece;
    return true;
  });
  writer.value(value);
  EXPECT_TRUE(writer.finish().ok());
  return bytes;
}

/// The tree as text, or "! " and the error.
std::string read(std::string_view bytes, const AllowedKinds& kinds = AllowedKinds::values()) {
  CborReader reader(bytes);
  const Result<Value> value = reader.takeValue(kinds);
  return value ? describe(*value) : "! " + value.error().description;
}

/// Its one field is a value of any kind.
class Box : public ArchivableObject {
 public:
  explicit Box(Dictionary fields) : _fields(std::move(fields)) {}
  std::string_view className() const override { return "Box"; }
  Dictionary archivedFields() const override { return _fields; }
  static Result<Value::Object> make(Dictionary fields) {
    if (!fields.contains("it")) return Error{"an empty box"};
    return Value::Object(std::make_shared<Box>(std::move(fields)));
  }

 private:
  Dictionary _fields;
};

Value box(Value content) {
  return Value::Object(std::make_shared<Box>(Dictionary{{"it", std::move(content)}}));
}

TEST(Cbor, DeterministicForms) {
  const struct {
    Value value;
    const char* hex;
  } cases[] = {
      {0, "00"},
      {24, "1818"},
      {255, "18ff"},
      {256, "190100"},
      {std::int64_t{1} << 32, "1b0000000100000000"},
      {-1, "20"},
      {-25, "3818"},
      {INT64_MIN, "3b7fffffffffffffff"},
      {INT64_MAX, "1b7fffffffffffffff"},
      {0.0, "f90000"},
      {-0.0, "f98000"},
      {1.5, "f93e00"},
      {65505.0, "fa477fe100"},
      {5.960464477539063e-8, "f90001"},
      {100000.0, "fa47c35000"},
      {1.1, "fb3ff199999999999a"},
      {1e300, "fb7e37e43c8800759c"},
      {HUGE_VAL, "f97c00"},
      {std::nan(""), "f97e00"},
      {true, "f5"},
      {Array{1, Array()}, "820180"},
      // Shorter keys first, then by their bytes.
      {Dictionary{{"b", 1}, {"aa", 2}, {"a", 3}}, "a361610361620162616102"},
      {box(1), "d81b8263426f78a162697401"},
  };
  const AllowedKinds kinds = AllowedKinds::values().allowClass("Box", Box::make);
  for (const auto& [value, hex] : cases) {
    EXPECT_EQ(toHex(written(value)), hex) << describe(value);
    EXPECT_EQ(read(fromHex(hex), kinds), describe(value)) << hex;
  }
}

TEST(Cbor, WhatTheReaderRefuses) {
  const struct {
    std::string bytes;
    const char* reason;  ///< part of it
  } cases[] = {
      {"", "end of data"},
      {fromHex("f6"), "Unexpected item"},      // null
      {fromHex("f7"), "Unexpected item"},      // undefined
      {fromHex("9f01ff"), "Unexpected item"},  // indefinite lengths
      {fromHex("7f6161ff"), "Unexpected item"},
      {fromHex("ff"), "Unexpected item"},
      {fromHex("c001"), "tag"},
      {fromHex("61ff"), "UTF-8"},
      {fromHex("a10101"), "Not a string"},
      {fromHex("a2616101616102"), "Duplicate"},
      {fromHex("1b8000000000000000"), "range"},
      {fromHex("9bffffffffffffffff"), "remaining"},
      {fromHex("bb8000000000000001"), "remaining"},
      {fromHex("828201018201"), "remaining"},
      {fromHex("5b7fffffffffffffff01"), "end of data"},
      {fromHex("7affffffff01"), "end of data"},
      {fromHex("d81b8263426f78a162697401"), "class Box"},
      {repeated(fromHex("81"), 1000000), "deep"},
      {repeated(fromHex("a16161"), 1000000), "deep"},
  };
  for (const auto& [bytes, reason] : cases) {
    const std::string outcome = read(bytes);
    EXPECT_TRUE(outcome.starts_with("! ") && outcome.find(reason) != std::string::npos)
        << toHex(bytes.substr(0, 20)) << " " << outcome;
  }
}

TEST(Cbor, ObjectsOnlyOfRegisteredClassesAndInTheirPlace) {
  AllowedKinds boxes = AllowedKinds::values().allowClass("Box", Box::make);
  EXPECT_EQ(read(written(Array{box(box(1))}), boxes), describe(Array{box(box(1))}));
  boxes.allowClass("Box", Box::make, AllowedKinds::Place::inObjects);
  EXPECT_NE(read(written(box(1)), boxes).find("class Box"), std::string::npos);

  boxes.allowClass("Box", Box::make);
  for (const char* bad : {"d81b63426f78", "d81b8363426f78a0f5", "d81b826342", "d81b82f5a0",
                          "d81b8263426f78f5", "d81b8263426f78a0"}) {
    EXPECT_TRUE(read(fromHex(bad), boxes).starts_with("! ")) << bad;
  }
  Value deep = 1;
  for (unsigned i = 0; i < maximumNesting / 2; ++i)
    deep = box(deep);
  EXPECT_FALSE(read(written(deep), boxes).starts_with("! "));
  EXPECT_FALSE(read(written(Array(2 * maximumNesting, box(1))), boxes).starts_with("! "));
  std::string bomb = repeated(fromHex("d81b8263426f78a1626974"), 100000);
  EXPECT_NE(read(bomb, boxes).find("deep"), std::string::npos);
}

TEST(Cbor, KindsThatAreNotAllowed) {
  const AllowedKinds strings = {"string"};
  EXPECT_EQ(read(written("a"), strings), "a");
  for (const Value& other : {Value(Data("a")), Value(Array()), Value(Dictionary()), Value(1),
                             Value(1.5), Value(true), box(1)}) {
    EXPECT_NE(read(written(other), strings).find(kindName(other)), std::string::npos);
  }
}

TEST(Cbor, LongStringsAndDataPassThrough) {
  const std::string text(100'000, 't');
  const Value tree = Array{text, Data(text), "\xFF" + text, "end"};
  const Data bytes(written(tree));
  CborReader reader(bytes);
  const Result<Value> back = reader.takeValue(AllowedKinds::values());
  ASSERT_TRUE(back.ok() && reader.atEnd());
  EXPECT_TRUE(*back == Value(Array{text, Data(text), "\xEF\xBF\xBD" + text, "end"}));
  const std::string_view shared = (*back->array())[1].data()->bytes();
  EXPECT_TRUE(shared.data() > bytes.bytes().data() &&
              shared.data() < bytes.bytes().data() + bytes.size());
}

TEST(Cbor, ASinkThatRefusesEndsTheWork) {
  int calls = 0;
  CborWriter writer([&calls](std::string_view) {
    ++calls;
    return false;
  });
  writer.value(Array(100'000, Value("some text")));
  EXPECT_FALSE(writer.finish().ok());
  EXPECT_EQ(calls, 1);
}

TEST(CborReader, TakesAnItemAsItIs) {
  const std::string item("\xA1\x61k\x82\x01\xC1\x43xyz", 10);
  for (std::size_t size = 0; size <= item.size(); ++size) {
    CborReader reader(std::string_view(item).substr(0, size));
    std::string_view taken;
    EXPECT_EQ(reader.takeItem(taken), size == item.size());
    EXPECT_EQ(taken, size == item.size() ? item : "");
  }
  for (const std::string_view more : {"\x9B\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "\x82\x82\x01",
                                      "\x9F\xFF", "\xA5", "\xC1", "\x41"}) {
    std::string_view taken;
    EXPECT_FALSE(CborReader(more).takeItem(taken));
  }
}

}  // namespace
}  // namespace quorvex
