#include "common/keyed_document.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "common/base64.h"
#include "common/nesting.h"
#include "tests/support/cbor_forms.h"
#include "tests/support/damage.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::repeated;

std::string document(const std::string& value) {
  return "<kvdoc>" + value + "</kvdoc>";
}

/// The tree as text, or "! " and the error.
std::string read(const std::string& bytes) {
  const Result<Value> value = parseKeyedDocument(bytes);
  return value ? describe(*value) : "! " + value.error().description;
}

Value everything() {
  return Dictionary{{"array", Array{"", " a\t<&>\"\r\n ", Array(), Dictionary()}},
                    {"data", Data(std::string("\0\xFF\x10", 3))},
                    {"flags", Array{true, false}},
                    {"numbers", Array{0, -1, std::numeric_limits<std::int64_t>::min(),
                                      std::numeric_limits<std::int64_t>::max(), 0.1, -HUGE_VAL}},
                    {"\xC3\xA4\xF0\x9F\x98\x80", 1}};
}

TEST(KeyedDocument, BothFormsComeBack) {
  const Value tree = everything();
  for (const std::string& bytes : {*keyedDocumentXml(tree), test::binaryDocument(tree)}) {
    const Result<Value> back = parseKeyedDocument(bytes);
    ASSERT_TRUE(back.ok()) << back.error().description;
    EXPECT_EQ(*back, tree);
  }
}

TEST(KeyedDocument, XmlByteForm) {
  EXPECT_EQ(*keyedDocumentXml(
                Dictionary{{"intro", Array{"/pages/intro.html", 1, true}}, {"empty", Array()}}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<kvdoc version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>empty</key>\n"
            "\t<array/>\n"
            "\t<key>intro</key>\n"
            "\t<array>\n"
            "\t\t<string>/pages/intro.html</string>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<true/>\n"
            "\t</array>\n"
            "</dict>\n"
            "</kvdoc>\n");
}

TEST(KeyedDocument, TextThatAFormCannotHoldIsRepaired) {
  const Value tree = Dictionary{{"a\x01", 1}, {"a\x02", 2}, {"t", "\xFF\x01\xEF\xBF\xBF."}};
  EXPECT_EQ(read(*keyedDocumentXml(tree)),
            "{\n    a\xEF\xBF\xBD = 1;\n    t = \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD.;\n}");
  // The key that needs no repair stays, and CBOR allows control characters.
  EXPECT_EQ(read(test::binaryDocument(Dictionary{{"\xFF", 1}, {"\xEF\xBF\xBD", 2}, {"\x01", 3}})),
            "{\n    \x01 = 3;\n    \xEF\xBF\xBD = 2;\n}");
}

TEST(KeyedDocument, WhatTheXmlReaderTakes) {
  const struct {
    const char* bytes;
    const char* expected;
  } cases[] = {
      {"<x version='9'><string>a</string></x>", "a"},
      {"<x><!-- c --><?pi?>\n <string>a<![CDATA[<b>]]>&lt;&#x41;<!-- c -->d</string></x>",
       "a<b><Ad"},
      {"<!DOCTYPE x SYSTEM 'file:///nowhere' [<!ENTITY e 'E'>]><x><true/></x>", "1"},
      {"<!DOCTYPE x [<!ATTLIST x a CDATA 'b'>]><x b='&amp;'><real> 1e3 </real></x>", "1000"},
      {"<x><data> AA \n E= </data></x>", "<2 bytes>"},
      {"<x><integer>+7</integer></x>", "7"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><x><string>\xE4</string></x>", "\xC3\xA4"},
      {"\xEF\xBB\xBF<x><string>bom</string></x>", "bom"},
  };
  for (const auto& [bytes, expected] : cases)
    EXPECT_EQ(read(bytes), expected) << bytes;
}

TEST(KeyedDocument, WhatTheXmlReaderRefuses) {
  const struct {
    std::string bytes;
    const char* reason;  ///< part of it
  } cases[] = {
      {"", "! "},
      {"<x/>", "no value"},
      {"<dict><key>a</key><true/></dict>", "<key>"},
      {document("<true/><true/>"), "<true>"},
      {document("<unknown/>"), "<unknown>"},
      {document("<p:true xmlns:p='q'/>"), "<true>"},
      {document("<true>x</true>"), "Text"},
      {document("<dict><true/></dict>"), "<true>"},
      {document("<dict><key>a</key></dict>"), "complete"},
      {document("<dict><key>a</key><key>b</key></dict>"), "<key>"},
      {document("<dict><key>a</key><true/><key>a</key><true/></dict>"), "Duplicate"},
      {document("<string><b/></string>"), "<b>"},
      {document("<data>AAE</data>"), "complete"},
      {document("<data>A=AA</data>"), "base64"},
      {document("<data>A-_A</data>"), "base64"},
      {document("<integer>1.5</integer>"), "complete"},
      {document("<integer>9223372036854775808</integer>"), "complete"},
      {document("<string>\xFF</string>"), "! "},
      {document("<string>&e;</string>"), "e"},
      {"<!DOCTYPE x [<!ENTITY e 'E'>]><x><string>&e;</string></x>", "e"},
      {"<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><x><string>&e;</string></x>", "e"},
      {"<!DOCTYPE x SYSTEM 'y'><x a='&e;'><string>a</string></x>", "e"},
      {"<!DOCTYPE x [<!ENTITY % p SYSTEM 'z'>%p;]><x><string>&e;</string></x>", "e"},
      {document(repeated("<array>", maximumNesting + 1) + repeated("</array>", maximumNesting + 1)),
       "deep"},
      {document(repeated("<array>", 1000000)), "deep"},
      {"<x " + repeated("a='&gt;' ", 100000) + "/>", "too long"},
      {"<!DOCTYPE x [" + repeated("<!ENTITY a 'b'>", 10000) + "]><x><true/></x>", "too long"},
  };
  for (const auto& [bytes, reason] : cases) {
    const std::string outcome = read(bytes);
    EXPECT_TRUE(outcome.starts_with("! ") && outcome.find(reason) != std::string::npos)
        << bytes.substr(0, 80) << "\n"
        << outcome;
  }
}

TEST(KeyedDocument, NestsAsDeepAsIsAllowedAndNoDeeper) {
  Value tree = 1;
  for (unsigned i = 0; i < maximumNesting; ++i)
    tree = Array{std::move(tree)};
  EXPECT_EQ(*parseKeyedDocument(*keyedDocumentXml(tree)), tree);
  EXPECT_EQ(*parseKeyedDocument(test::binaryDocument(tree)), tree);
  tree = Array{std::move(tree)};
  EXPECT_FALSE(keyedDocumentXml(tree).ok());
}

TEST(KeyedDocument, LongTextsInAFile) {
  const std::string section = repeated("a]] ", 5'000'000);
  EXPECT_TRUE(read(document("<string><![CDATA[" + section + "]]></string>")) == section);
  std::string bytes(12'000'000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(i * 7 + i / 251);
  const Value tree =
      Dictionary{{"text", repeated("d\xC3\xB6 & ", 2'000'000)}, {"data", Data(bytes)}};
  const test::TemporaryFolder folder;
  for (const std::string& document : {*keyedDocumentXml(tree), test::binaryDocument(tree)}) {
    folder.write("file", document);
    const Result<Value> back = readKeyedDocument(folder.path() / "file");
    ASSERT_TRUE(back.ok()) << back.error().description;
    EXPECT_TRUE(*back == tree);
  }
  EXPECT_FALSE(readKeyedDocument(folder.path() / "missing").ok());
  EXPECT_FALSE(readKeyedDocument(folder.path()).ok());
}

TEST(Base64, KnownTextsHoweverTheyAreCut) {
  const struct {
    const char* bytes;
    const char* text;
  } cases[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(base64Encoded(bytes), text);
    const std::string_view whole = text;
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
      Base64Decoder decoder;
      EXPECT_TRUE(decoder.append(whole.substr(0, cut)) && decoder.append(whole.substr(cut)));
      EXPECT_TRUE(decoder.complete());
      EXPECT_EQ(decoder.take(), bytes);
    }
  }
}

}  // namespace
}  // namespace quorvex
