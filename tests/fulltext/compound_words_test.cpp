#include "fulltext/searching/compound_words.h"

#include <gtest/gtest.h>

#include "tests/fulltext/index_support.h"

namespace quorvex::textsearch {
namespace {

struct Case {
  std::string language;
  std::string word;
  std::string expected;
};

class CompoundWordsTest : public testing::Test {
 protected:
  CompoundWordsTest() {
    IndexUnderTest built;
    // Short parts count only if two documents have them.
    for (const std::string path : {"/a", "/b"}) {
      built.add(path,
                "festplatten platten verschlüsselung kernel datei dateien system fehler sicherheit "
                "wort passenden enden geben weit ergeben buch druck druckerei plattform form "
                "säkerhet kontroll vers part "
                "dateisystem dateisysteme kernelsystem betriebssystem systemfehler systeme "
                "kernelmodul formen transform festplattenverschlüsselung");
    }
    built.add("/c", "kompilieren dateisystem ions");
    _index = IndexReader::open(built.closed());
    _titles.emplace(*_index);
  }

  static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
      text += (text.empty() ? "" : " ") + word;
    return text;
  }

  /// Calls use(words) for a language; knows "kompilierung" by another form.
  template <typename Use>
  std::string with(const std::string& language, Use use) const {
    Stemmer stemmer(language);
    const auto forms = [](std::string_view word) -> std::size_t {
      return word == "kompilierung" || word == "datenbank" ? 1 : 0;
    };
    return joined(use(CompoundWords(*_index, *_titles, language, stemmer, forms)));
  }

 private:
  std::shared_ptr<const IndexReader> _index;
  std::optional<TitleIndex> _titles;
};

TEST_F(CompoundWordsTest, SplitsCompoundsOfKnownWords) {
  const std::vector<Case> cases = {
      {"de", "festplattenverschlüsselung", "festplatten verschlüsselung"},
      {"de", "sicherheitssystem", "sicherheit system"},
      {"de", "kernelkompilierung", "kernel kompilierung"},
      {"de", "kompilierungsdatenbank", ""},                 // both known by other forms only
      {"de", "kernelsystemfehler", "kernel systemfehler"},  // rather than three parts
      {"de", "dateidateidateidatei", "datei datei datei datei"},
      {"de", "dateidateidateidateidatei", ""},
      {"sv", "säkerhetskontroll", "säkerhet kontroll"},
      {"fi", "säkerhetskontroll", ""},  // without linking elements
      {"fi", "kerneldatei", "kernel datei"},
      {"en", "kerneldatei", "kernel datei"},  // the caller asks isFor() first
      {"de", "versions", ""},                 // no document but one has "ions"
      {"de", "weitergeben", ""},              // neither "weit ergeben"
      {"de", "dateienden", ""},               // an ending
      {"de", "kernel", ""},
      {"de", "kernel.datei", ""},
      {"de",
       "kernel\xFF"
       "datei",
       ""},
      {"de", std::string(400, 'k'), ""},
  };
  for (const Case& one : cases) {
    const auto parts = [&](const CompoundWords& words) { return words.partsOf(one.word); };
    EXPECT_EQ(with(one.language, parts), one.expected) << one.language << ' ' << one.word;
  }
  EXPECT_TRUE(CompoundWords::isFor("nb"));
  EXPECT_FALSE(CompoundWords::isFor("en"));
}

TEST_F(CompoundWordsTest, FindsCompoundsWithAWord) {
  const std::vector<Case> cases = {
      {"de", "system", "dateisystem betriebssystem dateisysteme kernelsystem systemfehler"},
      {"de", "platten", ""},
      {"de", "verschlüsselung", "festplattenverschlüsselung"},
      {"de", "form", ""},  // "transform" begins with no word, "formen" ends with none
      {"de", "ion", ""},
      {"de", "\xC3\xA4\xFF\xFF\xFF", ""},
  };
  for (const Case& one : cases) {
    const auto found = [&](const CompoundWords& words) { return words.compoundsWith(one.word); };
    EXPECT_EQ(with(one.language, found), one.expected) << one.word;
  }
  const auto first = [](const CompoundWords& words) { return words.compoundsWith("system", 1); };
  EXPECT_EQ(with("de", first), "dateisystem");
}

}  // namespace
}  // namespace quorvex::textsearch
