#include "generate/stop_words.h"

#include <map>

#include <gtest/gtest.h>

#include "common/keyed_document.h"
#include "tests/support/cbor_forms.h"
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
  folder.write("user", test::binaryDocument(Array{"dup", "b", "dup", 1}));
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
  for (const auto& each : cases) {
    Words found;
    const auto read = [&] { found = stopWords(each.argument, each.builtIn); };
    EXPECT_EQ(test::printed(1, read), each.message);
    EXPECT_EQ(found, each.words) << each.argument.value_or("none");
  }
}

TEST(StopWords, TheInstalledListsHoldEveryPromisedLanguage) {
  const std::map<std::string, std::size_t> sizes{{"en", 174}, {"es", 308}, {"de", 232}, {"fr", 164},
                                                 {"sv", 114}, {"hu", 198}, {"it", 279}};
  const std::string path = QUORVEX_SOURCE_DIR "/data/Stopwords.kvdoc";
  for (const auto& [code, size] : sizes)
    EXPECT_EQ(stopWords(code, path).size(), size) << code;
  EXPECT_TRUE(stopWords("en", path).contains("wouldn't"));
  EXPECT_TRUE(stopWords("hu", path).contains("\xC5\x91ket"));
}

}  // namespace
}  // namespace quorvex
