#include "cli/stop_words.h"

#include <gtest/gtest.h>

#include "common/keyed_document.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using Words = std::set<std::string>;
constexpr const char* failure =
    "Couldn't open stopwords kvdoc at path: /usr/share/quorvex/Stopwords.kvdoc\n";

TEST(StopWords, ByCodeByPathOrNot) {
  const test::TemporaryFolder folder;
  ::setenv("HOME", folder.path().c_str(), 1);
  folder.write("builtin", *keyedDocumentXml(Dictionary{{"en", Array{"The", " a "}},
                                                       {"\xC3\xA4\xC3\xB6", Array{"umlauts"}},
                                                       {"xx", "no array"}}));
  folder.write("user", *keyedDocumentBinary(Array{"dup", "b", "dup", 1}));
  folder.write("dict", *keyedDocumentXml(Dictionary{{"en", Array{}}}));
  const std::string base = folder.path();
  const std::string builtIn = base + "/builtin";
  const struct {
    std::optional<std::string> argument;
    std::string builtIn;
    Words words;
    const char* message;
  } cases[] = {
      {std::nullopt, builtIn, {}, ""},
      {"", builtIn, {}, ""},
      {"en", builtIn, {"The", " a "}, ""},
      {"\xC3\xA4\xC3\xB6", builtIn, {"umlauts"}, ""},
      {"EN", builtIn, {}, failure},
      {"xx", builtIn, {}, failure},
      {"en", base + "/missing", {}, failure},
      {"en", base + "/user", {}, failure},
      {"x", builtIn, {}, failure},
      {"\xC3\xA4", builtIn, {}, failure},
      {base + "//./user", builtIn, {"dup", "b"}, ""},
      {"~/user", builtIn, {"dup", "b"}, ""},
      {base + "/dict", builtIn, {}, failure},
      {base + "/missing", builtIn, {}, failure},
  };
  for (const auto& [argument, lists, words, message] : cases) {
    Words found;
    EXPECT_EQ(test::printed(1, [&] { found = stopWords(argument, lists); }), message);
    EXPECT_EQ(found, words) << argument.value_or("none");
  }
}

TEST(StopWords, TheInstalledListsHoldEveryPromisedLanguage) {
  const struct {
    const char* code;
    const char* word;
    std::size_t atLeast;
  } lists[] = {{"en", "wouldn't", 174},     {"es", "hubi\xC3\xA9ramos", 308},
               {"de", "da\xC3\x9F", 231},   {"fr", "\xC3\xA9t\xC3\xA9", 155},
               {"sv", "n\xC3\xA5gon", 114}, {"hu", "\xC5\x91ket", 198},
               {"it", "perch\xC3\xA9", 279}};
  for (const auto& [code, word, atLeast] : lists) {
    const Words words = stopWords(code, QUORVEX_SOURCE_DIR "/data/Stopwords.kvdoc");
    EXPECT_GE(words.size(), atLeast) << code;
    EXPECT_TRUE(words.contains(word)) << code << " " << word;
  }
}

}  // namespace
}  // namespace quorvex
