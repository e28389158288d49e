#include <algorithm>

#include <gtest/gtest.h>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/query.h"
#include "fulltext/searching/word_terms.h"
#include "platform/textsift.h"
#include "tests/fulltext/index_support.h"

namespace quorvex {
namespace {

struct PageText {
  std::string name;
  std::string title;
  std::string text;
};

TSSearchRef searchOf(const std::vector<PageText>& pages, const Dictionary& properties = {}) {
  IndexUnderTest index(properties);
  for (const PageText& page : pages)
    index.add("/" + page.name, page.text, {{"T", page.title}});
  return TSSearchCreateWithIndex(index.reopened());
}

std::string listed(const TSSearchRef& search, const TSSearchAnswer& answer) {
  std::string list;
  for (const TSSearchHit& hit : answer.hits) {
    if (!list.empty()) list += ' ';
    list += TSSearchCopyDocumentURL(search, hit.document)->path().substr(1);
  }
  return list;
}

std::string found(const TSSearchRef& search, std::string_view query,
                  const TSSearchOptions& options = {.language = "en"}, std::size_t count = 10) {
  return listed(search, TSSearchFindDocuments(search, query, options, count));
}

TSSearchRef workshop() {
  return searchOf(
      {{"pump", "Water pumps", "A pump moves water. Clean the pump each spring."},
       {"valve", "Valves", "The safety valve opens when the pressure of the water is too high."},
       {"filter", "", "Change the filter when the pump runs slowly, and never without water."},
       {"tie", "Tying hoses", "A hose is tied with wire; ties of plastic break. Ask before."},
       {"state", "State of the art", "The art of welding, and its state today, is a long story."},
       {"hidden", "Pump room plan", ""}},
      {{std::string(kTSStopWords), Array{"the", "of", "a"}}, {std::string(kTSMinTermLength), 2}});
}

TEST(Search, FindsWhatTheQueryAsks) {
  const TSSearchRef search = workshop();
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"pumping", "pump filter"},  // by stem; a page without text is not found despite its title
      {"PUMP -filter", "pump"},
      {"water -\"safety valve\"", "pump filter"},
      {"water -safety-valve", "pump filter"},
      {"pump -O2 -m -std=welding", "pump state filter"},  // options
      {"dying to tie", "tie"},
      {"\"moves water\"", "pump"},
      {"\xE2\x80\x9Cmoves water\xE2\x80\x9D", "pump"},
      {"\"moves water\" \"clean the pump\" -\"water pump\"", "pump"},
      {"\"clean the pump\" -\"moves water\"", "filter"},              // asked again as words
      {"water -\"water pumps\" -\"change filter\"", "valve filter"},  // a phrase of a title
      {"\"water moves\"", "pump valve filter"},  // no such phrase: asked again as words
      {"change the \"pressure\" or filter", "filter valve"},
      {"\"water pumps\"", "pump"},        // in a title
      {"\"state the of art\"", "state"},  // any stop words fill a gap
      {"\"nonesuch here\"", ""},
      {"of the", "state"},  // left out of texts, but in a title
      {"\"the valve", "valve"},
      {"\"safety valve", "valve"},  // unclosed
      {"welding valve", "valve state"},
      {"nonesuch", ""},
      {"\xFF\xFEpump\xC3", "pump filter"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(found(search, query), expected) << query;
  EXPECT_EQ(found(search, "pumping", {.language = ""}), "");
  EXPECT_EQ(found(search, "pumping", {.language = "xx"}), "");
  EXPECT_EQ(found(search, "\"moves -water", {.language = "en", .isPlainText = true}),
            found(search, "moves water"));
  EXPECT_EQ(found(search, "water", {.language = "en"}, 1), "pump");
}

TEST(Search, KeepsTheListWhileAQueryIsTyped) {
  const TSSearchRef search = workshop();
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"wat", "pump valve filter"},
      {"wat ", "pump valve filter"},   // finished, but nothing is called so
      {"watex", "pump valve filter"},  // as much of it as something begins with
      {"wtaer", "pump valve filter"},  // swapped
      {"presure", "valve"},            // one missing
      {"press\u00FBr", "valve"},
      {"spring x", "pump"},
      {"spring th", "pump"},  // on the way to a word that the index lacks
      {"spring the", "pump"},
      {"o", "valve"},                      // shorter than words of the index, and alone
      {"water.pre", "valve pump filter"},  // joined
      {"water -", "pump valve filter"},
      {"water -val", "pump valve filter"},  // excludes once it is finished
      {"water -valve ", "pump filter"},
      {"\"safety va", "valve"},
      {"\"the va", "valve"},
      {"\"safety vax", "valve"},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(found(search, query, {.language = "en", .lastWordIsPrefix = true}), expected)
        << query;
  const TSSearchRef german = searchOf({{"kern", "", "Der Kernel und seine Quellen"},
                                       {"bau", "", "Kompilieren dauert lange"},
                                       {"etwas", "", "Nichts davon"}});
  EXPECT_EQ(found(german, "Kernelkompi", {.language = "de", .lastWordIsPrefix = true}), "bau kern");
}

TEST(Search, SaysWhyThereIsNothingToLookFor) {
  const TSSearchRef search = workshop();
  const std::vector<std::pair<std::string, TSSearchState>> cases = {
      {"", TSSearchState::noWords},
      {" \n-- \" ?!", TSSearchState::noWords},
      {"a", TSSearchState::onlyStopWords},
      {"\u00E9", TSSearchState::onlyStopWords},  // shorter than the minimum term length
      {"\"a a\"", TSSearchState::onlyStopWords},
      {"-pump", TSSearchState::onlyExcluded},
      {"the -\"a pump\"", TSSearchState::onlyExcluded},
      {"pump", TSSearchState::answered},
  };
  for (const auto& [query, state] : cases) {
    EXPECT_EQ(TSSearchFindDocuments(search, query, {}, 10).state, state) << query;
  }
  EXPECT_EQ(TSSearchCreateWithIndex(nullptr), nullptr);
  EXPECT_EQ(TSSearchFindDocuments(nullptr, "pump", {}, 10).state, TSSearchState::noWords);
}

TEST(Search, TakesAQueryOfAnyLength) {
  const TSSearchRef search = workshop();
  std::string many;
  while (many.size() < 1'000'000)
    many += "w" + std::to_string(many.size()) + " pump ";
  EXPECT_EQ(found(search, many), "pump filter");
  EXPECT_EQ(found(search, std::string(1'000'000, '"')), "");
  EXPECT_EQ(found(search, std::string(1'000'000, '-') + " pump"), "");
  EXPECT_EQ(found(search, std::string(1'000'000, 'x')), "");
}

TEST(Search, SuggestsWordsThatTheIndexHas) {
  const TSSearchRef search = workshop();
  const std::vector<std::pair<std::string, std::optional<std::string>>> cases = {
      {"saftey \"valvs\"!", "safety \"valves\"!"},
      {"presure pump", "pressure pump"},
      {"pmup", "pump"},
      {"filterr -watr", "filter -watr"},
      {"zzzzzz", std::nullopt},
      {"xq", std::nullopt},
      {"pump", std::nullopt},
  };
  for (const auto& [query, suggestion] : cases) {
    EXPECT_EQ(TSSearchFindDocuments(search, query, {}, 10).suggestion, suggestion) << query;
  }
}

TEST(Search, RanksTitlesRareWordsAndNearWordsFirst) {
  std::string filler;
  for (int i = 0; i < 60; ++i)
    filler += " word" + std::to_string(i);
  const TSSearchRef search = searchOf({{"far", "One", "red" + filler + " lamp" + filler},
                                       {"near", "Two", "red lamp" + filler + filler},
                                       {"title", "Dimmer", "about a dimmer" + filler},
                                       {"text", "Lights", "about a dimmer" + filler},
                                       {"rare", "Three", "zebra" + filler + filler},
                                       {"ajar", "Four", "green" + filler + " red door" + filler},
                                       {"open", "Five", "green and new door" + filler + filler}});
  EXPECT_EQ(found(search, "red lamp"), "near far ajar");
  EXPECT_EQ(found(search, "green door"), "open ajar");  // words near "red" do not matter
  EXPECT_EQ(found(search, "dimmer"), "title text");
  EXPECT_EQ(found(search, "word1 zebra").substr(0, 4), "rare");
}

TEST(Search, WhatAllTitlesShareIsNoWordOfThem) {
  std::vector<PageText> pages = {{"about", "The manual", "pumps"}};
  for (const std::string name : {"oil", "air", "water", "steam", "sand"})
    pages.push_back({name, name + " - Pump manual", "text"});
  const TSSearchRef search = searchOf(pages);
  EXPECT_EQ(found(search, "manual"), "about");
  EXPECT_EQ(found(search, "oil manual"), "oil about");
  EXPECT_EQ(TSSearchCopyTitle(search, 1), "oil");
  EXPECT_EQ(TSSearchCopyTitle(search, 6), "");
  EXPECT_EQ(TSSearchCopySharedTitle(search), "Pump manual");
}

TEST(Search, WeighsWordsAsInAllIndexes) {
  const auto english = searchOf({{"a", "", "red"}, {"b", "", "lamps"}, {"c", "", "oven"}},
                                {{std::string(kTSStopWords), Array{"how"}}});
  const auto german = searchOf({{"how", "", "how so"}, {"lamp", "", "lamp so"}});
  TSCollection both;
  for (const TSSearchRef& each : {english, german})
    TSSearchAddToCollection(each, "how lamp oven", {}, both);
  EXPECT_EQ(found(german, "how lamp"), "how lamp");
  EXPECT_EQ(found(german, "how lamp", {.collection = &both}), "lamp how");
  EXPECT_EQ(TSSearchFindDocuments(german, "lanp oben", {}, 9).suggestion, "lamp oben");
  EXPECT_EQ(TSSearchFindDocuments(english, "lamp how", {.collection = &both}, 9).suggestion,
            std::nullopt);
}

/// Stopping early must not change the best documents.
TEST(Search, TheBestFewAreTheFirstOfAll) {
  std::vector<PageText> pages;
  for (unsigned i = 0; i < 400; ++i) {
    std::string text;
    for (unsigned word = 0; word < 12; ++word) {
      if ((i * 7919 + word * 104'729) % (word + 2) == 0) {
        for (unsigned count = 0; count <= i % (word + 1); ++count)
          text += "term" + std::to_string(word) + " x" + std::to_string(i % 17) + ' ';
      }
    }
    pages.push_back({std::to_string(i), "page " + std::to_string(i % 50), text + "end"});
  }
  const TSSearchRef search = searchOf(pages);
  for (const char* query : {"term1 term5 term11", "term0 end page 7", "x3 x4 term2 term3 end"}) {
    const std::string all = found(search, query, {}, 400);
    for (const std::size_t count : {60U, 100U}) {
      const std::string best = found(search, query, {}, count);
      EXPECT_TRUE(all.starts_with(best)) << query << ' ' << count;
    }
  }
}

/// `rules`: the language whose rules find the words of a stem.
void expectAsAWalkOverAllTerms(const std::vector<std::string>& words, const std::string& language,
                               const std::string& rules) {
  IndexUnderTest index;
  for (std::size_t i = 0; i < words.size(); ++i)
    index.add("/" + std::to_string(i), words[i]);
  const auto reader = IndexReader::open(index.closed());
  const textsearch::TitleIndex titles(*reader);
  const textsearch::TermFinder finder(*reader, titles);
  Stemmer stemmer(language);
  for (const std::string& word : words) {
    const std::string stem(stemmer.stem(word));
    std::vector<std::string> expected;
    for (const std::string& other : words) {
      if (stemmer.stem(other) == stem) expected.push_back(other);
    }
    std::ranges::sort(expected);
    EXPECT_EQ(finder.inflectionsOf(word, rules, stemmer).forms, expected)
        << language << ' ' << word;
  }
}

TEST(Search, ExpandsWordsAsAWalkOverAllTermsWould) {
  const std::vector<std::string> words = {
      "happy",     "happily",    "happiness",       "die",        "dying",        "skies",
      "sky",       "haus",       "häuser",          "bäume",      "baum",         "verde",
      "élève",     "élèves",     "acción",          "acciones",   "ёлка",         "елка",
      "run",       "runs",       "running",         "tying",      "tie",          "lists",
      "überlänge", "überlängen", "rückübersetzung", "col·lecció", "col·leccions", "aparente",
      "aparência", "ağ",         "ağları",          "aka"};
  for (const char* language : {"en", "de", "es", "fr", "ru", "nl", "ca", "pt", "tr", "ar"})
    expectAsAWalkOverAllTerms(words, language, language);
  // A stemmer that breaks the rules of its supposed language, as it removes prefixes.
  expectAsAWalkOverAllTerms({"الكتاب", "كتاب", "البيت", "بيت"}, "ar", "en");
}

TEST(Search, DamagedIndexesAnswerOrRefuse) {
  IndexUnderTest index;
  for (int i = 0; i < 40; ++i)
    index.add("/" + std::to_string(i), "pump valve water " + std::to_string(i), {{"T", "A pump"}});
  const std::string bytes(index.closed().bytes());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
    const TSSearchRef search =
        TSSearchCreateWithIndex(TSIndexOpenWithData(Data(damaged), std::nullopt));
    for (const char* query : {"pumps \"pump valve\" -7", "watr"})
      TSSearchFindDocuments(search, query, {.language = "en"}, 5);
  }
}

}  // namespace
}  // namespace quorvex
