#include <gtest/gtest.h>

#include "common/bytes.h"
#include "common/checksum.h"
#include "fulltext/format/index_format.h"
#include "fulltext/reading/index_reader.h"
#include "tests/fulltext/index_support.h"
#include "tests/support/damage.h"

namespace quorvex {
namespace {

constexpr TSNameKind definition = TSNameKind::definition;
constexpr TSNameKind heading = TSNameKind::heading;
constexpr TSNameKind term = TSNameKind::term;

struct Page {
  std::string path;
  std::string title;
  std::string text;
  std::vector<TSPlace> places = {};
};

/// A place at the first `at` of a page's text; its heading is its first name.
TSPlace placeAt(const Page& page, std::string_view at, const std::string& fragment, unsigned level,
                const std::vector<TSName>& names = {}) {
  const std::string text = names.empty() || level == 0 ? "" : names.front().text;
  return {page.text.find(at), fragment, level, text, names};
}

std::string indexOf(const std::vector<Page>& pages, unsigned workers = 1) {
  IndexUnderTest index(Dictionary{{std::string(kTSStopWords), Array{"the", "of"}}});
  std::vector<TSDocumentRef> documents;
  for (const Page& page : pages)
    documents.push_back(TSDocumentCreateWithURL(*URL::fileURL("/" + page.path)));
  TSIndexAddDocuments(index.ref(), documents, false, workers, [&](std::size_t i) {
    return TSDocumentContent{pages[i].text,
                             {{std::string(titleProperty), pages[i].title}},
                             TSPlacesCreate(pages[i].places)};
  });
  return std::string(index.closed().bytes());
}

TSSearchRef searchOf(const std::string& bytes) {
  return TSSearchCreateWithIndex(TSIndexOpenWithData(Data(bytes), std::nullopt));
}

/// The names at a table's places as "document.place=name"; bounded by the table's size.
std::string listed(const NameTable& names) {
  std::string list;
  for (NameTable::Cursor name(names); name.next();) {
    for (const NamePlace& at : name.entry().places) {
      list += std::to_string(at.document) + '.' + std::to_string(at.place) + '=';
      list += name.entry().name + ' ';
    }
  }
  return list;
}

std::string listed(const DocumentPlaces& stored) {
  std::string list;
  for (const IndexPlace& place : stored.places) {
    list += std::to_string(place.position) + '/' + std::to_string(place.level) + '#';
    list.append(place.fragment).append("(").append(place.heading).append(")");
    list += place.headingIsName ? "n " : " ";
  }
  return list;
}

std::vector<std::vector<IndexPlace>> manyPlaces(std::vector<std::string>& texts) {
  for (int i = 0; i < 40; ++i)
    texts.push_back(std::string(static_cast<std::size_t>(i * i), 'x') + std::to_string(i));
  std::vector<std::vector<IndexPlace>> documents(40);
  for (std::uint32_t i = 0; i < 40; ++i) {
    for (std::uint32_t j = 0; j < i % 5; ++j) {
      const std::string_view fragment = j == 1 ? std::string_view() : texts[(i + j) % 40];
      const std::string_view text = j == 2 ? std::string_view() : texts[j * 7];
      documents[i].push_back(
          {i * 1000 * j, static_cast<std::uint8_t>(j * 3), j == 2, fragment, text});
    }
  }
  return documents;
}

TEST(PlaceTables, ReadBackWhatWasWritten) {
  std::vector<std::string> texts;
  const auto documents = manyPlaces(texts);
  PlaceTableBuilder builder;
  for (const auto& places : documents)
    builder.add(places);
  const std::string section = builder.take();
  const PlaceTable table(section, 40);
  for (std::uint32_t i = 0; i < 40; ++i)
    EXPECT_EQ(listed(table.places(i)), listed(DocumentPlaces{documents[i], {}})) << i;
  EXPECT_EQ(listed(table.places(40)), "");

  const std::string names = encodeNames({{"b.run", 0, {3, 1}},
                                         {"a.Run", 0, {9, 0}},
                                         {"a.Run", 2, {1, 0}},
                                         {"b.run", 0, {0, 7}},
                                         {"\xC3\x89t\xC3\xA9", 1, {2, 2}}});
  EXPECT_EQ(listed(NameTable(names)), "9.0=a.Run 1.0=a.Run 0.7=b.run 3.1=b.run 2.2=\u00C9t\u00E9 ");
}

TEST(PlaceTables, DamageIsBounded) {
  std::vector<std::string> texts;
  PlaceTableBuilder builder;
  std::vector<DefinedName> defined;
  for (const auto& places : manyPlaces(texts))
    builder.add(places);
  for (std::uint32_t i = 0; i < 200; ++i)
    defined.push_back({texts[i % 40], 0, {i, i % 3}});
  const std::string places = builder.take();
  const std::string names = encodeNames(defined);
  const std::size_t most = 40 * places.size();
  const auto readAll = [&](std::string_view section) {
    const PlaceTable table(section, 40);
    for (std::uint32_t i = 0; i < 40; ++i)
      EXPECT_LE(listed(table.places(i)).size(), most);
    const NameTable nameTable(section);
    EXPECT_LE(listed(nameTable).size(), most);
    NameTable::Cursor cursor(nameTable);
    cursor.seek("xxx");
    cursor.moveTo(130);
  };
  for (const std::string& section : {places, names}) {
    for (std::size_t i = 0; i < section.size(); i += i < 300 ? 1 : 17) {
      readAll(std::string_view(section).substr(0, i));
      for (const unsigned mask : {0x01U, 0x80U, 0xFFU})
        readAll(test::flipped(section, i, static_cast<unsigned char>(mask)));
    }
  }
}

/// Otherwise a small file could list one long run of places for every block of names.
TEST(PlaceTables, BlocksThatClaimTheSameBytes) {
  constexpr std::size_t blocks = 50;
  const std::string places(20'000, '\0');
  std::string section;
  for (const std::uint64_t number : {blocks * namesPerBlock, std::size_t{0}, std::size_t{0}})
    appendVarint(section, number);
  appendVarint(section, places.size());
  BlockTableBuilder table;
  for (std::size_t i = 0; i < blocks * namesPerBlock; ++i) {
    const bool begins = i % namesPerBlock == 0;
    if (begins) table.startBlock();
    table.entries() += std::string(begins ? 6 : 3, '\0');
    appendVarint(table.entries(), begins ? places.size() / 2 << 2U : 0);
  }
  section += places + table.take();
  EXPECT_LE(listed(NameTable(section)).size(), places.size() / 2 * std::string("0.0= ").size());
}

std::vector<Page> manual() {
  std::vector<Page> pages = {
      {"lib/task.html", "Tasks - The manual",
       "Tasks run. gather waits for tasks. Lock class keeps others out. acquire the lock. "
       "release the lock. Notes about the queue"},
      {"lib/thread.html", "Threads", "Lock class of threads. acquire it. Notes"},
      {"ref/dump.html", "pg_dump", "Options --clean drops things. -c the same. --create too"},
      {"ref/restore.html", "pg_restore", "Options --clean drops things"},
      {"ref/save.html", "std::box<T>::save(bool)", "box save keeps"},
      {"plain.html", "Plain page", "Nothing here has a place. gather words"}};
  Page& task = pages[0];
  task.places = {placeAt(task, "Tasks", "tasks", 2, {{"Tasks", heading}}),
                 placeAt(task, "gather", "asyncio.gather", 7, {{"asyncio.gather", definition}}),
                 placeAt(task, "Lock", "asyncio.Lock", 7, {{"asyncio.Lock", definition}}),
                 placeAt(task, "acquire", "asyncio.Lock.acquire", 8, {{"acquire", definition}}),
                 placeAt(task, "release", "r", 8, {{"release", term}}),
                 placeAt(task, "Notes", "notes", 2, {{"Notes about the queue", heading}})};
  Page& thread = pages[1];
  thread.places = {placeAt(thread, "Lock", "threading.Lock", 2, {{"Lock objects", heading}}),
                   placeAt(thread, "acquire", "t-acquire", 7, {{"acquire", definition}})};
  for (Page* page : {&pages[2], &pages[3]}) {
    page->places = {placeAt(*page, "Options", "options", 2, {{"Options", heading}}),
                    placeAt(*page, "--clean", "clean", 7, {{"--clean", definition}})};
  }
  pages[2].places.push_back(
      placeAt(pages[2], "--create", "", 7, {{"-C", term}, {"--create", term}}));
  return pages;
}

std::string shown(const TSSearchRef& search, const TSNamedPlace& named) {
  std::string text = TSSearchCopyDocumentURL(search, named.document)->path().substr(1);
  if (named.place != TSNamedPlace::pageItself) {
    text += "#" + TSSearchCopyPlace(search, named)->fragment;
  }
  return text + " ";
}

TEST(Names, AreFoundAsReadersTypeThem) {
  const TSSearchRef search = searchOf(indexOf(manual()));
  const auto expect = [&](const auto& cases, const auto& ask) {
    for (const auto& [queries, expected] : cases) {
      for (const std::string& query : queries) {
        std::string list;
        for (const TSNamedPlace& named : ask(query))
          list += shown(search, named);
        EXPECT_EQ(list, expected) << query;
      }
    }
  };
  using Case = std::pair<std::vector<std::string>, std::string>;
  const std::vector<Case> cases = {
      {{"asyncio.gather", "gather", "GATHER", "\"gather\"", "gather()", "gather(*tasks)"},
       "lib/task.html#asyncio.gather "},
      {{"Lock.acquire", "acquire"},
       "lib/thread.html#t-acquire lib/task.html#asyncio.Lock.acquire "},
      {{"release", "task.release"}, "lib/task.html#r "},
      {{"--clean"}, "ref/dump.html#clean ref/restore.html#clean "},
      {{"pg_dump --clean"}, "ref/dump.html#clean "},
      {{"-C"}, "ref/dump.html#options "},
      {{"Notes about the queue"}, "lib/task.html#notes "},
      {{"std::box::save", "box::save", "save"}, "ref/save.html "},
      {{"notes", "nonesuch", "...", "", "a b c d e f g", "\xFFgather", std::string(201, 'x')}, ""}};
  const std::vector<Case> beginnings = {{{"thread.acq"}, "lib/thread.html#t-acquire "},
                                        {{"pg"}, "ref/dump.html ref/restore.html "},
                                        {{".", "", "zzz", "\xFF"}, ""}};
  expect(cases, [&](const std::string& query) {
    return TSSearchFindDocuments(search, query, {.isPlainText = true}, 5).named;
  });
  expect(beginnings, [&](const std::string& text) { return TSSearchFindNames(search, text, 3); });
}

/// Each name is asked for what surrounds it, on pages with many places, and pages by turns.
TEST(Names, OnPagesWithManyPlaces) {
  std::vector<Page> pages(2);
  for (Page& page : pages) {
    page.path = "p" + std::to_string(&page - pages.data());
    for (int i = 0; i < 30'000; ++i) {
      const std::string name = "c" + std::to_string(i) + ".save";
      page.places.push_back({page.text.size(), name, 7, name, {{name, definition}}});
      page.text += "foo bar ";
    }
  }
  const TSSearchRef search = searchOf(indexOf(pages, 2));
  EXPECT_TRUE(TSSearchFindDocuments(search, "zzz.save", {}, 5).named.empty());
  EXPECT_TRUE(TSSearchFindNames(search, "zzz.s", 5).empty());
  EXPECT_EQ(TSSearchFindNames(search, "c7.s", 5).size(), 2U);
}

/// The places of a page for a query as "fragment(heading > heading) ".
std::string found(const TSSearchRef& search, const std::string& query, TSDocumentID document) {
  std::string list;
  const auto answer = TSSearchFindDocuments(search, query, {.language = "en"}, 5);
  for (const TSFoundPlace& place : TSSearchFindPlaces(search, answer, document, 3)) {
    list += place.fragment + '(';
    for (const std::string& text : place.headings)
      list += text + (&text == &place.headings.back() ? "" : " > ");
    list += ") ";
    EXPECT_LE(place.begin, place.end);
  }
  return list;
}

TEST(Passages, TheDensestFirst) {
  const std::string filler =
      " word3 word7 " + std::string(70, 'a') + test::repeated(" b", 30) + ' ';
  Page page{"p", "Lamps",
            "top words Colours red" + filler + "lamp Bulbs red lamp" + filler +
                "Wires lamp glows red and red Sockets lamp" + filler +
                "Fuses green door Deeper door and green"};
  for (const char* text : {"Colours", "Bulbs", "Wires", "Sockets", "Fuses"})
    page.places.push_back(placeAt(page, text, text, 2, {{text, heading}}));
  page.places.push_back(placeAt(page, "Deeper", "", 3, {{"Deeper", heading}}));
  const TSSearchRef search = searchOf(indexOf({page, {"r", "None", "red lamp"}}));
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"red lamp", "Wires(Wires) Bulbs(Bulbs) Colours(Colours) "},
      {"\"red lamp\"", "Bulbs(Bulbs) Wires(Wires) Colours(Colours) "},
      {"deeper door", "Fuses(Fuses > Deeper) "},
      {"sockets word3", "Sockets(Sockets) Colours(Colours) Bulbs(Bulbs) "},
  };
  for (const auto& [query, expected] : cases)
    EXPECT_EQ(found(search, query, 0), expected) << query;
  EXPECT_EQ(found(search, "red lamp", 1), "");
  EXPECT_FALSE(TSSearchCopyPlace(search, {0, 99}));
}

TEST(PlaceSections, LeaveOutWhatRepeatsOnMostPages) {
  std::vector<Page> pages;
  for (int i = 0; i < 60; ++i) {
    const std::string number = std::to_string(i);
    Page page{"p" + number, "Page " + number, "menu text Description of things own" + number};
    page.places = {placeAt(page, "menu", "menu", 0),
                   placeAt(page, "Description", "description", 2, {{"Description", heading}}),
                   placeAt(page, "own", "own" + number, 7, {{"own" + number, definition}})};
    pages.push_back(page);
  }
  const std::string bytes = indexOf(pages);
  for (const unsigned workers : {2U, 4U})
    EXPECT_EQ(indexOf(pages, workers), bytes) << workers;
  const TSSearchRef search = searchOf(bytes);
  EXPECT_EQ(found(search, "menu", 3), "() ");
  EXPECT_EQ(found(search, "things", 3), "description(Description) ");
  EXPECT_EQ(found(search, "own7", 7), "own7(Description > own7) ");
  EXPECT_EQ(TSSearchFindNames(search, "descr", 9).size(), 0U);
  EXPECT_EQ(TSSearchFindNames(search, "own7", 9).size(), 1U);
}

/// As in files of earlier versions.
TEST(PlaceSections, MayBeAbsent) {
  std::vector<std::string> sections = *takeApart(indexOf(manual()), indexContainer);
  for (const IndexSection kind : {IndexSection::places, IndexSection::names})
    sections[static_cast<std::size_t>(kind) - 1].clear();
  std::string bytes;
  assembleContainer(indexContainer, sections, bytes);
  const TSSearchRef search = searchOf(bytes);
  const auto answer = TSSearchFindDocuments(search, "gather words", {.language = "en"}, 5);
  ASSERT_EQ(answer.hits.size(), 2U);
  EXPECT_TRUE(TSSearchFindPlaces(search, answer, answer.hits[0].document, 3).empty());
  EXPECT_TRUE(TSSearchFindNames(search, "gat", 3).empty());
  EXPECT_TRUE(TSSearchFindDocuments(search, "acquire", {.language = "en"}, 5).named.empty());
}

}  // namespace
}  // namespace quorvex
