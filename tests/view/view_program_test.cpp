
#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/program_run.h"
#include "view/book/page_links.h"
#include "view/book/page_title.h"
#include "view/book/start_page.h"
#include "view/http/listener.h"
#include "view/view_site.h"

namespace quorvex::view {
namespace {

namespace fs = std::filesystem;
using test::ChildProcess;
using testing::HasSubstr;
using testing::StartsWith;

/// A book, and a home for the programs that show it.
class ViewProgram : public testing::Test {
 protected:
  ViewProgram() {
    _book.write("index.html", "<title>Lamps</title><h2 id=oil>Oil</h2><p>An oil lamp glows.");
    _book.write("b/wick.html", "<title>Wicks</title><p>A wick is of cotton.");
    _book.write("c/index.htm", "<meta name=robots content=noindex><a href=http://far.example/>Far");
  }

  std::vector<std::string> command(std::vector<std::string> words) const {
    std::vector<std::string> all{"/usr/bin/env", "HOME=" + _home.path().string(),
                                 "XDG_CACHE_HOME=", "XDG_STATE_HOME=", QUORVEX_VIEW_PROGRAM};
    all.insert(all.end(), words.begin(), words.end());
    return all;
  }
  test::Ended run(const std::vector<std::string>& words) const {
    return test::ProgramRun(_home.path(), command(words)).end();
  }
  /// Starts the program, lets it print its address, and ends it.
  std::string addressOfRun() const {
    ChildProcess process(command({"--no-browser", _book.path()}));
    std::string address = process.readLine();
    process.send(SIGTERM);
    EXPECT_EQ(process.wait(), 0);
    return address;
  }
  static std::uint16_t portOf(const std::string& address) {
    return static_cast<std::uint16_t>(std::stoi(address.substr(address.find(':', 7) + 1)));
  }

  test::TemporaryFolder _book;
  test::TemporaryFolder _home;
};

TEST_F(ViewProgram, GivesAStatusForEachOutcome) {
  const struct {
    std::vector<std::string> words;
    int status;
    std::string output;
    std::string error;
  } cases[] = {
      {{"--help"}, 0, "Usage: quorvex-view", ""},
      {{"--version"}, 0, "quorvex-view 2", ""},
      {{}, 2, "", "No book"},
      {{"a", "b"}, 2, "", "Only one book can be opened: b"},
      {{"--port=80", "a"}, 2, "", "Invalid value for --port: 80"},
      {{"--port", "70000", "a"}, 2, "", "Invalid value for --port"},
      {{"--book"}, 2, "", "--book needs a value"},
      {{"--keep=1", "a"}, 2, "", "--keep takes no value"},
      {{"--no", "a"}, 2, "", "Unknown option: --no"},
      {{"nowhere"}, 3, "", "nowhere: "},
      {{_book.path() / "index.html"}, 3, "", "index.html: "},
      {{"--book=first", "--book", "last", "index"}, 3, "", "last: "},
      {{"--book", _book.path(), _book.path() / "index.html"}, 3, "", "quorvex-view: "},
  };
  for (const auto& each : cases) {
    const test::Ended ended = run(each.words);
    SCOPED_TRACE(each.error + each.output);
    EXPECT_EQ(ended.status, each.status);
    EXPECT_THAT(ended.output, StartsWith(each.output));
    EXPECT_THAT(ended.errors, HasSubstr(each.error));
  }
}

TEST_F(ViewProgram, KeepsItsAddressUntilSomebodyElseHasThePort) {
  const std::string first = addressOfRun();
  EXPECT_THAT(first, testing::MatchesRegex("http://127.0.0.1:[0-9]+/[0-9a-f]{32}/"));
  EXPECT_EQ(addressOfRun(), first);
  {
    const auto other = Listener::open(portOf(first));
    ASSERT_TRUE(other);
    const std::string second = addressOfRun();
    EXPECT_NE(portOf(second), portOf(first));
    EXPECT_NE(second.substr(second.size() - 33), first.substr(first.size() - 33));
  }
  for (const auto& entry : fs::recursive_directory_iterator(_home.path())) {
    const bool isPrivate = (entry.status().permissions() & fs::perms(077)) == fs::perms::none;
    if (entry.path().filename() == "quorvex" || entry.is_regular_file()) {
      EXPECT_TRUE(isPrivate) << entry.path();
    }
  }
}

TEST_F(ViewProgram, FindsTheOneThatServesTheBook) {
  const ChildProcess first(command({"--no-browser", _book.path()}));
  const std::string address = first.readLine();
  const test::Ended second = run({"--no-browser", _book.path() / "b/.."});
  EXPECT_EQ(second.output, address + "\n");
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(run({"--no-browser", "--allow-network", _book.path()}).status, 4);
}

TEST_F(ViewProgram, TellsTheBrowserOnlyWhereTheDoorIs) {
  _home.write("xdg-open",
              "#!/bin/sh\necho noise\necho noise >&2\ncat \"${1#file://}\" >\"$HOME/door\"\n");
  fs::permissions(_home.path() / "xdg-open", fs::perms::owner_all);
  const ChildProcess server(command({"--no-browser", _book.path()}));
  const std::string address = server.readLine() + '\n';
  const struct {
    const char* variable;
    std::string output;
    std::string errors;
    bool isOpened;
  } cases[] = {
      {"DISPLAY=:9", "", "", true},
      {"WAYLAND_DISPLAY=w", "", "", true},
      {"BROWSER=nonesuch:xdg-open %s", "", "", true},
      {"BROWSER=nonesuch", address, "quorvex-view: No browser could be started: nonesuch\n", false},
      {"NONE=", address,
       "quorvex-view: No browser could be started: There is no display, and BROWSER is not set\n",
       false},
  };
  for (const auto& each : cases) {
    std::vector<std::string> words = command({_book.path()});
    words.insert(words.begin() + 1, {"BROWSER=", "DISPLAY=", "WAYLAND_DISPLAY=", each.variable,
                                     "PATH=" + _home.path().string() + ":/usr/bin:/bin"});
    const test::Ended ended = test::ProgramRun(_home.path(), words).end();
    EXPECT_EQ(std::tie(ended.output, ended.errors), std::tie(each.output, each.errors));
    const Result<Data> door = readFile(_home.path() / "door");
    EXPECT_EQ(
        door && door->bytes().find(address.substr(0, address.size() - 1)) != std::string::npos,
        each.isOpened);
    fs::remove(_home.path() / "door");
  }
}

TEST_F(ViewProgram, RunsWithoutAFolderToKeepAnythingIn) {
  fs::create_directories(_home.path() / "state");
  _home.write("state/quorvex", "a file");
  std::vector<std::string> words = command({"--no-browser", _book.path()});
  words.insert(words.end() - 3, "XDG_STATE_HOME=" + (_home.path() / "state").string());
  const ChildProcess process(words);
  EXPECT_THAT(process.readLine(), StartsWith("http://127.0.0.1:"));
}

TEST_F(ViewProgram, AnswersTheInterface) {
  IndexKeeper keeper({_book.path(), std::nullopt}, std::string());
  while (keeper.state().phase != IndexState::Phase::ready)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const ViewSite site({"folder", _book.path(), "http://b", false}, *BookFolder::open(_book.path()),
                      keeper);
  const struct {
    std::string path;
    std::string query;
    unsigned status;
    std::string body;
  } cases[] = {
      {"", "q=x", 200, "<!doctype html>"},
      {"book", "", 200, "\"origin\":\"http://b\",\"network\":false,\"pages\":2"},
      {"state", "", 200, "\"phase\":\"ready\",\"remaking\":false,\"message\":null"},
      {"search", "q=lamp+glows", 200, "\"path\":\"/index.html\",\"fragment\":\"oil\""},
      {"search", "q=wic&typing=1", 200, "\"path\":\"/b/wick.html\""},
      {"search", "q=wikc", 200, "\"searched\":\"wick\""},
      {"search", "q=%00%FF", 200, "{\"hits\":[],\"state\":\"noWords\""},
      {"search", "q=lamp&count=-7", 200, "\"rank\":1"},
      {"related", "page=/none.html", 200, "{\"hits\":[]}"},
      {"link", "page=/../index.html&href=x", 200, "{\"known\":false}"},
      {"link", "page=/c/&href=http://far.example/", 200, "{\"known\":true}"},
      {"link", "page=/c&href=http://far.example/", 200, "{\"known\":false}"},
      {"search/", "", 404, ""},
      {"page_limits.js", "", 404, ""},
  };
  for (const auto& each : cases) {
    const Response response = site.answer({"GET", "", each.path, each.query, {}});
    SCOPED_TRACE(each.path + "?" + each.query);
    EXPECT_EQ(response.status, each.status);
    EXPECT_THAT(std::get<std::string>(response.body), HasSubstr(each.body));
  }
}

TEST(StartPage, IsTheHighestIndexPageElseTheFirst) {
  const struct {
    std::vector<std::string> files;
    std::string start;
  } cases[] = {
      {{"a.html", "index.html", "z/index.html"}, "/index.html"},
      {{"a.html", "x/index.html"}, "/a.html"},
      {{"x/y/index.html", "y/b.html", "z/index.htm"}, "/z/index.htm"},
      {{"b b.html", "a.txt", "c/a.HTM"}, "/b b.html"},
      {{"a.txt", ".git/index.html"}, "/"},
  };
  for (const auto& each : cases) {
    const test::TemporaryFolder folder;
    for (const std::string& file : each.files)
      folder.write(file, "");
    EXPECT_EQ(startPageOf(folder.path()), each.start);
  }
}

TEST(PageTitle, IsTheOneThatIsShown) {
  const struct {
    std::string page;
    std::string title;
  } cases[] = {
      {"<!doctype html><title>\n  Lamps &amp;  oil </title><svg><title>x</title></svg>",
       "Lamps & oil"},
      {"<h1>Lamps</h1>", ""},
      {"<title>Lamps</title>" + std::string(2 << 20, ' '), ""},
      {"", ""},
  };
  for (const auto& each : cases) {
    const test::TemporaryFolder folder;
    folder.write("page.html", each.page);
    const auto file = openRegularFile(folder.path() / "page.html");
    ASSERT_TRUE(file);
    EXPECT_EQ(titleOfPage(file->descriptor), each.title);
  }
}

TEST(PageLinks, AreWholeValues) {
  const test::TemporaryFolder folder;
  folder.write("page.html",
               "<a href=\"https://a.example\">1</a> <a href='http://b.example/?c=1&amp;d=2'>2</a> "
               "<a href=mailto:e@f.example>3</a> https://g.example/ text");
  const struct {
    std::string address;
    bool isThere;
  } cases[] = {
      {"https://a.example/", true},   {"http://b.example/?c=1&d=2", true},
      {"mailto:e@f.example", true},   {"http://b.example/?c=1", false},
      {"https://a.example/x", false}, {"", false},
  };
  for (const auto& each : cases) {
    const auto file = openRegularFile(folder.path() / "page.html");
    ASSERT_TRUE(file);
    EXPECT_EQ(holdsLink(file->descriptor, each.address), each.isThere) << each.address;
  }
}

}  // namespace
}  // namespace quorvex::view
