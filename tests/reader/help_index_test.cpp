#include "quorvex/help_index.h"

#include <algorithm>
#include <array>
#include <thread>

#include <gtest/gtest.h>

#include "reader/fusion.h"
#include "reader/page_path.h"
#include "tests/reader/book.h"

namespace quorvex {
namespace {

using test::bookFile;
using test::fileOf;
using test::indexed;

std::string listed(const std::vector<Hit>& hits) {
  std::string list;
  for (const Hit& hit : hits)
    list += (list.empty() ? "" : " ") + hit.page.path.substr(hit.page.path.rfind('/') + 1);
  return list;
}

/// The hits, or in parentheses why there are none.
std::string answer(const Expected<HelpIndex>& index, std::string_view query,
                   const SearchOptions& options) {
  const Expected<SearchResult> result = index->search(query, options);
  if (!result) return "(" + result.failure().message + ")";
  return listed(result->hits);
}

TEST(HelpIndex, TellsWhatAFileHolds) {
  const auto index = HelpIndex::fromBytes(bookFile());
  ASSERT_TRUE(index);
  EXPECT_EQ(index->contents().format, 1);
  EXPECT_EQ(index->contents().pages, 12U);
  EXPECT_TRUE(index->contents().fullText && index->contents().semantic);
  EXPECT_FALSE(index->contents().ignoresSemantic);
  EXPECT_EQ(index->contents().language, "en_US");
  EXPECT_EQ(index->contents().title, "Page 0");
  const HelpPage page = index->page(1);
  EXPECT_EQ(page.path, "/en.lproj/sub/p1.html");
  EXPECT_EQ(page.firstAnchor, "start");
  EXPECT_EQ(page.title, "Page 1");
  EXPECT_EQ(page.description, "On subject 1");
  EXPECT_EQ(index->page(12).path, "");
  EXPECT_EQ(index->pagesWithAnchor("start").size(), 12U);
  EXPECT_EQ(index->pagesWithAnchor("only7"), std::vector<std::string>{"/en.lproj/sub/p7.html"});
  EXPECT_TRUE(index->pagesWithAnchor("nowhere").empty());
}

TEST(HelpIndex, JoinsOnlyPathsThatStayInTheFolder) {
  for (const auto& [page, joined] :
       std::vector<std::pair<std::string, std::string>>{{"/a/b.html", "/book/a/b.html"},
                                                        {"a//./b..html", "/book/a/b..html"},
                                                        {"/..a/...", "/book/..a/..."}}) {
    EXPECT_EQ(joinPagePath("/book/", page), joined);
  }
  using namespace std::string_view_literals;
  for (const std::string_view page :
       {".."sv, "/../x"sv, "a/../b"sv, "a/.."sv, ""sv, "/"sv, "/a/"sv, "/a/."sv, "a\0b"sv}) {
    EXPECT_EQ(joinPagePath("/book", page), std::nullopt) << page;
  }
  EXPECT_EQ(joinPagePath("", "/a"), "./a");
}

TEST(HelpIndex, SearchesByWordsAndByMeaning) {
  const auto index = HelpIndex::fromBytes(bookFile());
  ASSERT_TRUE(index);
  for (const Ranking ranking : {Ranking::best, Ranking::fullText, Ranking::semantic}) {
    const std::string hits = answer(index, "breads number4", {.ranking = ranking, .count = 4});
    EXPECT_EQ(hits.substr(0, 7), "p4.html") << hits;
    EXPECT_EQ(answer(index, "oven -number4 -number7 -number10", {.ranking = ranking, .count = 1}),
              "p1.html");
  }
  const auto related = index->related("en.lproj/sub/p2.html", 3);
  ASSERT_TRUE(related);
  EXPECT_EQ(related->size(), 3U);
  for (const Hit& hit : *related)
    EXPECT_EQ(hit.page.description, "On subject 2");
  EXPECT_TRUE(index->related("/nowhere.html")->empty());

  const auto result = index->search("subject page", {.count = 1});
  const Hit& hit = result->hits.front();
  ASSERT_EQ(hit.titleMatches.size(), 1U);
  EXPECT_EQ(hit.titleMatches.front().end, 4U);
  EXPECT_EQ(hit.descriptionMatches.size(), 1U);
}

TEST(HelpIndex, ComparesThePagesOfSeveralBooks) {
  std::vector<std::string> pumps(8, "<title>Care</title>Oil the pump. A pump needs oil.");
  pumps.push_back(
      "<title>The valve</title>The valve of the pump opens. Clean the valve, the pump.");
  const std::vector<std::string> lamps = {
      "<title>Bulbs</title>Replace the bulb of the lamp in the hall, beside the pump.",
      "<title>Light</title>The lamp burns all night in the hall."};
  std::vector<HelpIndex> books;
  for (const auto& pages : {lamps, pumps})
    books.push_back(*HelpIndex::fromBytes(fileOf(indexed(fullTextIndex, pages))));
  const auto found = [&](std::string_view query, const SearchOptions& options) {
    const auto result = HelpIndex::searchAll(books, query, options);
    if (!result) return "(" + result.failure().message + ")";
    std::string list = result->suggestion.value_or("");
    for (const Hit& hit : result->hits)
      list += " " + std::to_string(hit.index) + listed({hit}).substr(0, 2);
    return list;
  };
  // Pumps are rare in the book on lamps, but not in both.
  EXPECT_EQ(found("pump", {.count = 20}), " 1p0 1p8 1p1 1p2 1p3 1p4 1p5 1p6 1p7 0p0");
  EXPECT_EQ(found("pump in the hall", {.count = 2}), " 0p1 0p0");
  EXPECT_EQ(found("lamp valves", {.count = 1, .language = "en"}), " 1p8");
  EXPECT_EQ(found("light", {.count = 1}), " 0p1");
  EXPECT_EQ(found("lamp vallve", {.count = 1}), "lamp valve 1p8");
  EXPECT_EQ(found("\"in the hall\"", {}), " 0p1 0p0");
  EXPECT_EQ(found("\"valve hall\"", {.count = 1}), " 1p8");  // no such phrase in any book
  EXPECT_EQ(found("lamp", {.ranking = Ranking::semantic}),
            "(Index 1: The index contains no semantic index)");
  EXPECT_EQ(HelpIndex::searchAll({}, "lamp")->state, QueryState::noWords);
}

TEST(HelpIndex, ExplainsScores) {
  const auto index = HelpIndex::fromBytes(bookFile());
  const Dictionary semantic = {{"RDXIndexData", *find(indexed(semanticIndex), "RDXIndexData")}};
  const auto onlySemantic = HelpIndex::fromBytes(fileOf(semantic));
  const std::string prose =
      "the pump moves water through all the pipes of this house and what needs oil once a year";
  struct Case {
    const char* firstLine;  ///< or its beginning
    const Expected<HelpIndex>& index;
    std::string query;
    SearchOptions options;
    const char* part;  ///< of the best hit
  };
  const std::array<Case, 7> cases = {{
      {"Meaning", index, "oven number4", {}, "words"},
      {"Meaning counts ", index, prose, {}, "meaning"},
      {"Meaning", index, "Page 4", {}, "defines the name Page 4"},
      {"Ranked by words alone", index, "the numbe", {.lastWordIsPrefix = true}, "words"},
      {"Ranked by words alone", index, "pumps", {.ranking = Ranking::fullText}, "words"},
      {"Ranked by meaning alone", index, "oven", {.ranking = Ranking::semantic}, "meaning"},
      {"Ranked by meaning alone", onlySemantic, "oven", {}, "meaning"},
  }};
  for (Case one : cases) {
    EXPECT_TRUE(one.index->search(one.query, one.options)->explanation.empty());
    one.options.explained = true;
    const auto result = one.index->search(one.query, one.options);
    ASSERT_FALSE(result->hits.empty()) << one.query;
    EXPECT_EQ(result->explanation.front().find(one.firstLine), 0U) << result->explanation.front();
    for (const Hit& hit : result->hits) {
      double sum = 0;
      for (const ScorePart& part : hit.parts)
        sum += part.value;
      EXPECT_NEAR(sum, hit.score, 1e-4 * hit.score);
    }
    const auto isWanted = [&](const ScorePart& part) { return part.name == one.part; };
    EXPECT_TRUE(std::ranges::any_of(result->hits.front().parts, isWanted)) << one.query;
  }
  const auto words = index->search("bulbz number5", {.explained = true});
  EXPECT_EQ(words->searched, "bulb number5");
  EXPECT_EQ(words->explanation.at(1), "bulb: bulb (4 pages)");
  EXPECT_EQ(words->explanation.at(2), "number5: number5 (1 page)");
}

TEST(HelpIndex, MarksThePartsOfANameWhereTheNameIsMissing) {
  const auto index = HelpIndex::fromBytes(fileOf(indexed(
      fullTextIndex, {"Call lamp.light now.", "A lamp and its light.", "Another is lamp_case."})));
  const auto marked = [&](const char* query, const std::string& text) {
    return test::marked(text, *index->match(query, text));
  };
  const char* text = "A lamp in lamp_case: lamp.light, its light";
  EXPECT_EQ(marked("lamp.light", text), "A lamp in lamp_case: [lamp.light], its light");
  EXPECT_EQ(marked("lamp.light lamps", text), "A [lamp] in [lamp_case]: [lamp.light], its light");
  EXPECT_EQ(marked("lamp.light", "A lamp in lamp_case"), "A [lamp] in lamp_case");
}

TEST(HelpIndex, MarksAQueryInAnyText) {
  const auto index = HelpIndex::fromBytes(bookFile());
  struct Case {
    const char* query;
    const char* marked;
    SearchOptions options = {};
  };
  const std::array<Case, 12> cases = {{
      {"burning ovens", "Nothing [burns] in the [Oven] nor in ovenware."},
      {"bulbz number5", "The [bulb] of [number5], not of numbers"},
      {"the numb", "[The] [number4] and [the] numbers of numb", {.lastWordIsPrefix = true}},
      {"\"in the hall\" -lamp", "[hall]: [in] a lamp, [the] halls"},
      {"\"lamps burn\"", "A [lamp] that [burns]"},  // no page has the phrase
      {"lamp", "[lamp]", {.ranking = Ranking::semantic}},
      {"lamp", "\xFF\xC3[Lamp]\xFF[LAMP]\xC3 lamp\xC3\xA9"},
      {"zzzz", "zzzz"},
      {"-lamp", "lamp"},
      {"lamp -lamp", "lamp"},
      {" ,", "lamp , "},
      {"lamp", ""},
  }};
  for (const Case& one : cases) {
    std::string text = one.marked;
    std::erase_if(text, [](char c) { return c == '[' || c == ']'; });
    const auto matches = index->match(one.query, text, one.options);
    ASSERT_TRUE(matches) << one.query;
    EXPECT_EQ(test::marked(text, *matches), one.marked) << one.query;
  }
  EXPECT_EQ(index->match("lamp", "lamp", {.language = "xx"}).failure().reason,
            Failure::Reason::unknownLanguage);
  const Dictionary semantic = {{"RDXIndexData", *find(indexed(semanticIndex), "RDXIndexData")}};
  EXPECT_EQ(HelpIndex::fromBytes(fileOf(semantic))->match("lamp", "lamp").failure().reason,
            Failure::Reason::lacksForm);
}

TEST(HelpIndex, WhatIsExcludedTakesNoPlaceOfOthers) {
  const auto index = HelpIndex::fromBytes(fileOf(indexed(semanticIndex | fullTextIndex, 630)));
  ASSERT_TRUE(index);
  std::string query = "oven";
  const auto nearest = index->search(query, {.ranking = Ranking::semantic, .count = 200});
  for (const Hit& hit : nearest->hits)
    query += " -number" + hit.page.title.substr(std::string_view("Page ").size());
  EXPECT_EQ(index->search(query, {.ranking = Ranking::semantic})->hits.size(), 10U);
}

TEST(HelpIndex, SearchesSearchableItems) {
  const auto index = HelpIndex::fromBytes(fileOf(indexed(searchableItems), IndexFormat::beacon));
  ASSERT_TRUE(index);
  EXPECT_EQ(index->contents().format, 2);
  EXPECT_EQ(index->contents().pages, 12U);
  EXPECT_EQ(index->page(3).path, "/en.lproj/sub/p11.html");
  EXPECT_EQ(index->pagesWithAnchor("only3"), std::vector<std::string>{"/en.lproj/sub/p3.html"});
  EXPECT_EQ(answer(index, "bulbs number5", {.count = 1, .language = "en"}), "p5.html");
  EXPECT_EQ(answer(index, "bulb", {.ranking = Ranking::semantic}),
            "(The index contains no semantic index)");
}

TEST(HelpIndex, SaysWhatAnIndexLacks) {
  const Dictionary whole = indexed(semanticIndex | fullTextIndex);
  Dictionary fullText = whole;
  fullText.erase("RDXIndexData");
  Dictionary semantic = whole;
  semantic.erase("TSI_INDEX_DATA");
  Dictionary neither = fullText;
  neither.erase("TSI_INDEX_DATA");
  const Dictionary ignored = indexed(semanticIndex | fullTextIndex, 3);
  struct Case {
    const Dictionary& index;
    std::array<const char*, 3> hits;  ///< best, full text, semantic
  };
  const char* const noSemantic = "(The index contains no semantic index)";
  const char* const noFullText = "(The index contains no full-text index)";
  const std::array<Case, 4> cases = {{
      {fullText, {"p4.html", "p4.html", noSemantic}},
      {semantic, {"p4.html", noFullText, "p4.html"}},
      {neither, {noSemantic, noFullText, noSemantic}},
      {ignored, {"p1.html", "p1.html", "(The index marks its semantic index as not worth using)"}},
  }};
  for (const Case& one : cases) {
    const auto index = HelpIndex::fromBytes(fileOf(one.index));
    ASSERT_TRUE(index);
    const char* const query = &one.index == &ignored ? "oven" : "oven number4";
    for (const std::size_t i : {0U, 1U, 2U}) {
      EXPECT_EQ(answer(index, query, {.ranking = static_cast<Ranking>(i), .count = 1}),
                one.hits[i]);
    }
  }
}

TEST(HelpIndex, FindsThePagesOfAStaleSemanticIndex) {
  Dictionary mixed = indexed(fullTextIndex, 9);
  mixed.insert_or_assign("RDXIndexData", *find(indexed(semanticIndex, 12), "RDXIndexData"));
  const auto index = HelpIndex::fromBytes(fileOf(mixed));
  ASSERT_TRUE(index);
  EXPECT_EQ(answer(index, "number8", {.ranking = Ranking::semantic, .count = 1}), "p8.html");
  EXPECT_EQ(answer(index, "number11", {.ranking = Ranking::semantic}).find("p11"),
            std::string::npos);
}

TEST(HelpIndex, RefusesWhatIsNoIndex) {
  EXPECT_EQ(HelpIndex::open("/nowhere/at/all").failure().reason, Failure::Reason::unreadable);
  const std::string& file = bookFile();
  const std::string sequential = fileOf(indexed(fullTextIndex), IndexFormat::none);
  for (const std::string& bytes :
       {std::string(), std::string("text"), sequential, file.substr(0, file.size() / 2), file + "x",
        fileOf({{"TSI_INDEX_DATA", Data(std::string("no index"))}}),
        fileOf({{"RDXIndexData", "text"}})}) {
    const auto index = HelpIndex::fromBytes(bytes);
    ASSERT_FALSE(index);
    EXPECT_EQ(index.failure().reason, Failure::Reason::notAnIndex);
  }
}

TEST(HelpIndex, IsEmptyWhenMovedFrom) {
  auto index = HelpIndex::fromBytes(bookFile());
  HelpIndex other = std::move(*index);
  // NOLINTBEGIN(bugprone-use-after-move): that is the test
  EXPECT_EQ(index->contents().pages, 0U);
  EXPECT_EQ(index->search("water").failure().reason, Failure::Reason::invalidArgument);
  EXPECT_TRUE(index->pagesWithAnchor("start").empty());
  EXPECT_EQ(index->page(0).path, "");
  *index = other;
  EXPECT_EQ(index->contents().pages, 12U);
  // NOLINTEND(bugprone-use-after-move)
}

TEST(HelpIndex, MatchesInflectionsOfTheLanguage) {
  const auto index = HelpIndex::fromBytes(fileOf(indexed(fullTextIndex)));
  EXPECT_EQ(index->contents().language, std::nullopt);
  for (const auto& [language, hits] : std::vector<std::pair<std::string, std::string>>{
           {"en_GB", "p0.html"}, {"und", ""}, {"ja", ""}, {"xx", "(Unknown language: xx)"}}) {
    EXPECT_EQ(answer(index, "pumping", {.count = 1, .language = language}), hits) << language;
  }
}

TEST(HelpIndex, AnswersSeveralThreads) {
  const auto index = HelpIndex::fromBytes(bookFile());
  std::vector<std::thread> threads;
  std::array<std::string, 4> answers;
  for (std::string& own : answers) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20; ++i)
        own = answer(index, "water pumps number" + std::to_string(i % 12), {.count = 3}) +
              index->pagesWithAnchor("only1").front();
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  for (const std::string& own : answers)
    EXPECT_EQ(own, answers.front());
}

TEST(Reader, TakesPathsApart) {
  const std::array<std::array<const char*, 3>, 6> paths = {{
      {"/a/b.html#x", "/a/b.html", "x"},
      {"/c#.html", "/c#.html", ""},
      {"/c#.HTM#a#b", "/c#.HTM", "a#b"},
      {"/plain", "/plain", ""},
      {"/plain#x", "/plain", "x"},
      {"/a.html#", "/a.html", ""},
  }};
  for (const auto& [whole, path, anchor] : paths) {
    EXPECT_EQ(reader::splitPagePath(whole).path, path);
    EXPECT_EQ(reader::splitPagePath(whole).anchor, anchor);
  }
}

TEST(Reader, JoinsRankings) {
  const std::vector<reader::ScoredPage> words = {{1, 8}, {2, 4}};
  const std::vector<reader::ScoredPage> meaning = {{3, 0.5}, {2, 0.4}};
  using Ranked = std::vector<reader::ScoredPage>;
  const auto order = [&](const Ranked& a, const Ranked& b, double meaningPart) {
    std::string text;
    for (const auto& page : reader::fuse(a, b, meaningPart))
      text += std::to_string(page.page);
    return text;
  };
  EXPECT_EQ(order(words, meaning, 0.4), "213");  // 0.6, 0.3 + 0.32, 0.4
  EXPECT_EQ(order(words, meaning, 0.8), "321");  // 0.2, 0.1 + 0.64, 0.8
  EXPECT_EQ(order(words, {}, 0.4), "12");
  EXPECT_EQ(order({}, meaning, 0.4), "32");
  // Few words are names, and pages that hold all words need no other help.
  EXPECT_EQ(reader::semanticPart(4, 0.2), 0);
  EXPECT_EQ(reader::semanticPart(20, 1), 0);
  EXPECT_EQ(reader::semanticPart(20, 0.5), 0.8);
}

}  // namespace
}  // namespace quorvex
