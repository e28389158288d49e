#include "generate/index_file_generator.h"

#include <algorithm>
#include <semaphore>

#include "generate/full_text_index.h"
#include "generate/semantic_index.h"
#include "tests/support/log_capture.h"

namespace quorvex {
namespace {

using test::printed;
using Strings = std::vector<std::string>;

/// An in-memory book; a page without contents cannot be read.
class FakeBook : public QXIndexable {
 public:
  std::map<std::string, std::optional<std::string>> pages;
  std::optional<std::string> defaultPattern = R"(.*\.html?$)";

  std::optional<Strings> subpaths() override {
    Strings names;
    for (const auto& [name, contents] : pages)
      names.push_back(name);
    std::ranges::reverse(names);
    return names;
  }
  std::optional<Data> contentsOfSubpath(const std::string& subpath) override {
    const auto& contents = pages.at(subpath);
    return contents ? std::optional(Data(*contents)) : std::nullopt;
  }
  std::optional<Predicate> defaultIncludePredicate() const override {
    if (!defaultPattern) return std::nullopt;
    return *Predicate::matching(*defaultPattern);
  }
  std::optional<URL> baseURL() const override { return std::nullopt; }
};

std::shared_ptr<FakeBook> bookOf(std::size_t pages) {
  auto book = std::make_shared<FakeBook>();
  for (std::size_t i = 0; i < pages; ++i) {
    const std::string number = std::to_string(1000 + i);
    book->pages[number + ".html"] = "<title>T" + number + "</title><body><a name=n" + number +
                                    ">Page " + number + " of a book about pumps and valves.";
  }
  return book;
}

class RecordingCenter : public NotificationCenter {
 public:
  std::vector<Notification> posted;
  void post(const Notification& notification) override { posted.push_back(notification); }
  bool addObserver(const std::string& /*name*/, Observer /*observer*/) override { return false; }
};

/// "begin N", fractions to three places, "end".
std::string progress(const std::shared_ptr<FakeBook>& book) {
  const auto center = std::make_shared<RecordingCenter>();
  IndexSettings settings;
  settings.sendNotifications = true;
  const auto generator = std::make_shared<QXIndexFileGenerator>(book, settings);
  generator->setNotificationCenter(center);
  generator->generateIndex();
  EXPECT_TRUE(generator->isFinished());
  std::string text;
  for (const Notification& notification : center->posted) {
    EXPECT_EQ(notification.sender, std::to_string(::getpid()));
    if (const Value* count = find(notification.userInfo, "OperationCount")) {
      text += "begin " + std::to_string(*count->integer()) + ' ';
    } else if (const Value* fraction = find(notification.userInfo, "PercentCompleted")) {
      text += std::to_string(*fraction->real()).substr(0, 5) + ' ';
    } else {
      text += "end";
    }
  }
  return text;
}

TEST(IndexFileGenerator, PostsProgress) {
  EXPECT_EQ(progress(bookOf(0)), "end");
  EXPECT_EQ(progress(bookOf(4)), "begin 4 0.250 0.500 0.750 1.000 end");
  EXPECT_EQ(progress(bookOf(20)).substr(0, 21), "begin 20 0.100 0.200 ");
  const std::string of21 = progress(bookOf(21));
  EXPECT_TRUE(of21.ends_with("0.952 end")) << of21;
  const std::string of100 = progress(bookOf(100));
  EXPECT_EQ(of100.substr(0, 28), "begin 100 0.060 0.120 0.170 ");
  EXPECT_TRUE(of100.ends_with("0.960 end")) << of100;
  auto lossy = bookOf(3);
  lossy->pages["1001.html"] = std::nullopt;
  EXPECT_EQ(progress(lossy), "begin 3 0.333 0.666 end");
}

TEST(OperationQueue, ItsUserWorksWhereTooMuchWaits) {
  struct Work : Operation {
    std::function<void()> body;
    explicit Work(std::function<void()> does) : body(std::move(does)) {}
    void main() noexcept override { body(); }
  };
  std::binary_semaphore begun(0);
  std::binary_semaphore end(0);
  unsigned done = 0;
  OperationQueue queue(10);
  queue.setMaxConcurrentOperationCount(2);
  const auto occupy = [&] {
    begun.release();
    end.acquire();
  };
  queue.add(std::make_shared<Work>(occupy), 0);
  begun.acquire();  // by the only other thread
  for (const unsigned expected : {0U, 0U, 1U, 2U}) {
    queue.add(std::make_shared<Work>([&done] { ++done; }), 5);
    EXPECT_EQ(done, expected);
  }
  end.release();
}

TEST(IndexFileGenerator, FiltersSubpaths) {
  struct Case {
    Strings include;
    Strings exclude;
    std::optional<Strings> expected;
    std::string messages;
  };
  const std::string fallBack = "Continuing to index with built-in filter\n";
  const Strings names = {"b.html", "a.txt", "c/d.htm", "b.html"};
  for (const Case& item : {
           Case{{}, {}, Strings{"b.html", "c/d.htm"}, ""},
           Case{{"A\\.TXT"}, {}, Strings{"a.txt", "b.html", "c/d.htm"}, ""},
           Case{{"b.*"}, {".*HTML"}, Strings{"c/d.htm"}, ""},
           Case{{".html"}, {"c"}, Strings{"b.html", "c/d.htm"}, ""},
           Case{{"("}, {"b.*"}, Strings{"b.html", "c/d.htm", "b.html"}, fallBack},
           Case{{}, {"["}, Strings{"b.html", "c/d.htm", "b.html"}, fallBack},
       }) {
    QXIndexFileGenerator generator(std::make_shared<FakeBook>());
    for (const std::string& pattern : item.include) {
      generator.addIncludePredicates({*Predicate::matching(pattern)});
    }
    for (const std::string& pattern : item.exclude) {
      generator.addExcludePredicates({*Predicate::matching(pattern)});
    }
    const std::string messages =
        printed(1, [&] { EXPECT_EQ(generator._filteredSubpaths(names), item.expected); });
    EXPECT_TRUE(messages.ends_with(item.messages));
    EXPECT_EQ(messages.empty(), item.messages.empty());
  }
  const auto bare = std::make_shared<FakeBook>();
  bare->defaultPattern = std::nullopt;
  QXIndexFileGenerator generator(bare);
  generator.addIncludePredicates({*Predicate::matching("(")});
  EXPECT_EQ(printed(4, [&] { EXPECT_EQ(generator._filteredSubpaths({"a"}), std::nullopt); }), "");
}

TEST(IndexFileGenerator, GivesTheSameIndexAtAnyConcurrency) {
  const auto run = [](bool oneByOne, std::uint64_t types) {
    IndexSettings settings;
    settings.oneByOne = oneByOne;
    settings.outputIndexTypes = types;
    // A failing predicate makes one run receive the pages in the opposite order.
    if (oneByOne) settings.excludePredicates = {*Predicate::matching("(")};
    return std::make_shared<QXIndexFileGenerator>(bookOf(200), settings)->generateIndex();
  };
  for (const unsigned types : {1U, 2U, 3U, 4U, 7U})
    EXPECT_EQ(run(true, types), run(false, types));
  EXPECT_EQ(run(true, 0), Dictionary());
}

/// Pages on which the forms cut words in different ways or take different parts of the page.
std::shared_ptr<FakeBook> hostileBook() {
  const std::vector<std::string> bodies = {
      "It's the dogs' 90's l'\u00E9t\u00E9 rock'n'roll a''b 'quoted' of I\u2019m x\u2019 "
      "don\u2019t",
      "\u4E2D\u534E'\u4EBA\u6C11 \u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35\u2019x \u05E6\u05D4' "
      "\u00DCBER Stra\u00DFe",
      "tom@example.com @Override a.b.c 1'2 3.14 C++ operator() " + std::string(300, 'y') + " z",
      "\u0301mark <pre>a ->> b\n\n  &&=</pre> \u200D\u2019\u0301' <a name=x>running ran runs</a>",
  };
  auto book = std::make_shared<FakeBook>();
  for (std::size_t i = 0; i < 40; ++i) {
    std::string page = "<title>Title's " + bodies[i % 3] + "</title>";
    if (i % 5 == 1) page += "<meta name=description content=\"" + bodies[i % 4] + "'\">";
    if (i % 7 == 2) page += "<meta name=keywords content=\"it's,\u4E2D\u534E , ,pump\">";
    if (i % 11 == 3) page += "<meta name=robots content=keywords>";
    if (i % 13 == 4) page += "<meta name=robots content=anchors>";
    page += "<body>";
    for (std::size_t j = 0; j <= i % 6; ++j)
      page += "<p>" + bodies[(i + j) % 4] + std::to_string(i * j);
    book->pages[std::to_string(i) + ".html"] = page;
  }
  // Where this is cut depends on what stands before.
  std::string& endless = book->pages["endless.html"].emplace();
  endless =
      "<meta name=description content=\u4E2D\u534E><meta name=keywords content=\u4E2D\u534E><body>";
  for (int i = 0; i < 40'000; ++i)
    endless += i % 7 == 0 ? "b'" : "\u4E2D\u534E";
  return book;
}

TEST(IndexFileGenerator, FindsTheWordsThatTheTextsHave) {
  const auto book = hostileBook();
  for (const unsigned minimumLength : {1U, 2U, 3U}) {
    IndexSettings settings;
    settings.minimumTermLength = minimumLength;
    settings.generateSummaries = minimumLength == 2;
    settings.stopwords = {"the", "of", "it's", "90"};
    settings.indexLocale = Locale::withIdentifier("en");
    ParsedDocuments documents;
    for (const auto& [path, page] : book->pages) {
      QXParseDocumentOperation operation(Data(*page), path, 2, settings);
      operation.main();
      documents.push_back(operation.primaryDocument());
    }
    std::ranges::sort(documents, {}, &QXParsedDocument::path);
    Dictionary expected = createFullTextIndex(documents, settings, 1);
    expected.merge(createSemanticIndex(documents, settings, {}));
    settings.outputIndexTypes = semanticIndex | fullTextIndex;
    EXPECT_EQ(std::make_shared<QXIndexFileGenerator>(book, settings)->generateIndex(), expected);
  }
}

TEST(IndexFileGenerator, IsNobodyElsesWhenTheMemoryEnds) {
  class HungryBook : public FakeBook {
    std::optional<Data> contentsOfSubpath(const std::string& subpath) override {
      if (subpath == "1039.html") throw std::bad_alloc();  // the last one, while others are queued
      return FakeBook::contentsOfSubpath(subpath);
    }
  };
  const auto book = std::make_shared<HungryBook>();
  book->pages = bookOf(40)->pages;
  const auto generator = std::make_shared<QXIndexFileGenerator>(book);
  EXPECT_THROW(generator->generateIndex(), std::bad_alloc);
  EXPECT_EQ(generator.use_count(), 1);

  const auto shortOfMemory = std::make_shared<QXIndexFileGenerator>(book);
  ++memoryShortages();
  EXPECT_EQ(shortOfMemory->generateIndex(), std::nullopt);
}

TEST(IndexFileGenerator, LosesOnlyThePageThatCannotBeRead) {
  const auto book = bookOf(3);
  book->pages["1001.html"] = std::nullopt;
  const auto generator = std::make_shared<QXIndexFileGenerator>(book);
  EXPECT_EQ(printed(0, [&] { generator->generateIndex(); }),
            "-[QXIndexFileGenerator init]: data was nil for path: 1001.html\n");
  ASSERT_EQ(generator->documents().size(), 2U);
  EXPECT_EQ(generator->documents()[1]->path(), "1002.html");
}

TEST(FullTextIndex, CollectsAnchorsAndSettings) {
  AnchorTable table;
  for (const char* path : {"a.html", "/b.html"}) {
    QXParsedDocument document(path);
    document.anchors().add("intro");
    document.anchors().add("");
    EXPECT_EQ(printed(0, [&] { mergeAnchors(document, table); }),
              "Error: anchor was not valid:  (string)\n");
  }
  EXPECT_EQ(table, (AnchorTable{{"intro", Array{"/a.html", "/b.html"}}}));

  IndexSettings settings;
  const Dictionary plain = createFullTextIndex({}, settings, 1);
  EXPECT_EQ(plain.at("TSI_USE_REMOTE_ROOT"), Value(false));
  EXPECT_TRUE(plain.contains("TSI_VERSIONS"));
  EXPECT_FALSE(plain.contains("TSI_ANCHOR_DATA"));
  EXPECT_FALSE(plain.contains("TSI_REMOTE_ROOT"));
  settings.useRemoteRoot = true;
  settings.remoteRoot = URL::parse("");
  EXPECT_FALSE(createFullTextIndex({}, settings, 1).contains("TSI_PREFER_NETWORK_FILES"));
  settings.remoteRoot = URL::parse("https://help.example/book");
  const Dictionary remote = createFullTextIndex({}, settings, 1);
  EXPECT_EQ(remote.at("TSI_REMOTE_ROOT"), Value("https://help.example/book"));
  EXPECT_EQ(remote.at("TSI_PREFER_NETWORK_FILES"), Value(true));
}

TEST(SemanticIndex, CutsSubPathsAtTheLanguageFolder) {
  for (const auto& [path, subPath] :
       {std::pair{"Contents/Resources/en.lproj/sub/page.html", "sub/page.html"},
        {"Resources/page.html", "page.html"},
        {"ab/c.html", "ab/c.html"},
        {"a/b.html", "b.html"},
        {"\xC3\xA9/b.html", "b.html"},
        {"en.lproj/x.html", "x.html"},
        {"x", ""},
        {"", ""},
        {"/ab/c.html", "ab/c.html"},
        {"Resourcesx/p.html", "Resourcesx/p.html"}}) {
    EXPECT_EQ(articleSubPath(path), subPath) << path;
  }
}

TEST(SemanticIndex, JudgesWhetherABookIsWorthIt) {
  const auto worthIt = [](std::size_t pages, std::size_t characters, std::size_t emptyPages) {
    ParsedDocuments documents;
    for (std::size_t i = 0; i < pages + emptyPages; ++i) {
      documents.push_back(std::make_shared<QXParsedDocument>("p"));
      for (std::size_t c = 0; i < pages && c < characters; ++c) {
        documents.back()->content() += "\xC3\xA4";
      }
    }
    return isWorthSemanticIndex(documents);
  };
  EXPECT_FALSE(worthIt(0, 0, 0));
  EXPECT_FALSE(worthIt(5, 9999, 0));
  EXPECT_TRUE(worthIt(6, 51, 0));
  EXPECT_FALSE(worthIt(6, 50, 0));
  EXPECT_FALSE(worthIt(6, 833, 100));
  EXPECT_TRUE(worthIt(6, 901, 100));
}

TEST(SemanticIndex, DescribesArticles) {
  QXParsedDocument document("p.html");
  EXPECT_EQ(articleProperties(document, false), Dictionary());
  document.title() = " T ";
  document.keywords() = ",";
  document.setKeywordsOnly(true);
  document.xScriptLinks().push_back({{"Name", "n"}});
  Dictionary expected = {{"HelpDocPropertyTitle", "T"},
                         {"HelpDocPropertyKeywords", Array()},
                         {"HelpDocPropertyExcludeFromSearch", true},
                         {"HelpDocPropertyActions", Array()}};
  EXPECT_EQ(articleProperties(document, false), expected);
  document.xScriptLinks().push_back({{"Name", "n"}, {"Link", "help:l"}});
  expected.at("HelpDocPropertyActions") = Array{
      Dictionary{{"HelpDocPropertyActionName", "n"}, {"HelpDocPropertyActionLink", "help:l"}}};
  EXPECT_EQ(articleProperties(document, false), expected);
}

}  // namespace
}  // namespace quorvex
