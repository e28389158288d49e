#include <filesystem>

#include <gmock/gmock.h>

#include "search/hit_text.h"
#include "search/search_arguments.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

using test::TemporaryFolder;
using testing::HasSubstr;
using testing::StartsWith;

test::Ended run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), QUORVEX_SEARCH_PROGRAM);
  return test::ProgramRun(".", arguments).end();
}

class SearchProgram : public testing::Test {
 protected:
  SearchProgram() {
    _folder.write("book/pump.html",
                  "<title>Pump \"A\"</title><meta name=description content='On pumps'><body>"
                  "<a name=start>The pump moves water.");
    _folder.write("book/lamp.html", "<title>Lamp</title><body>The lamp burns. No water.");
    test::ProgramRun quorvex(_folder.path(), {QUORVEX_PROGRAM, "-aCIlsm", "-f", "index", "book"});
    EXPECT_EQ(quorvex.end().status, 0);
  }
  std::string index() const { return (_folder.path() / "index").string(); }

  TemporaryFolder _folder;
};

TEST_F(SearchProgram, GivesAStatusForEachOutcome) {
  const std::string file = index();
  const std::vector<std::pair<std::vector<std::string>, int>> cases = {
      {{file, "water"}, 0},
      {{file, "nonesuch"}, 1},
      {{file, ""}, 1},
      {{file, "-water"}, 1},
      {{file, "\xFF\xFF"}, 1},
      {{"--semantic", file, "water"}, 1},  // too small a book
      {{"--related", "/pump.html", file}, 1},
      {{"--anchor", "start", file}, 0},
      {{"--anchor=nowhere", file}, 1},
      {{"-n1", "--prefix", "--language=en", "--full-text", file, "wat"}, 0},
      {{"--", file, "--json", "lamp"}, 0},
      {{"--help"}, 0},
      {{}, 2},
      {{file}, 2},
      {{"-n", "0", file, "water"}, 2},
      {{"-n"}, 2},
      {{"--count=x", file, "water"}, 2},
      {{"--json=1", file, "water"}, 2},
      {{"--language", "not a locale!", file, "water"}, 2},
      {{"--unknown", file, "water"}, 2},
      {{"--anchor", "a", "--related", "b", file}, 2},
      {{"--anchor", "a", file, "water"}, 2},
      {{file + "x", "water"}, 3},
      {{QUORVEX_PROGRAM, "water"}, 3},
      {{_folder.path().string(), "water"}, 3},
  };
  for (const auto& [arguments, status] : cases)
    EXPECT_EQ(run(arguments).status, status) << testing::PrintToString(arguments);
}

TEST_F(SearchProgram, ListsHits) {
  EXPECT_EQ(run({index(), "water", "-lamps"}).output,
            "1. Pump \"A\"\n   /pump.html\n   On pumps\n");
  const std::string json = run({index(), "pumps", "--json"}).output;
  EXPECT_THAT(json, StartsWith("{\"rank\":1,\"score\":"));
  EXPECT_THAT(json, HasSubstr("\"path\":\"/pump.html\",\"fragment\":\"\",\"title\":\"Pump "
                              "\\\"A\\\"\",\"description\":\"On pumps\"}\n"));
  EXPECT_EQ(run({"--anchor", "start", index()}).output, "/pump.html\n");
  EXPECT_EQ(run({"--\x1B[2J"}).errors,
            "quorvex-search: Unknown option: -- [2J\nTry 'quorvex-search --help'.\n");
  EXPECT_THAT(run({"-h"}).output, StartsWith("Usage: quorvex-search"));
}

TEST(HitText, EmphasisesMatchesAndNothingElseMovesTheCursor) {
  Hit hit;
  hit.page = {"/a\x1B[2J.html", "", "A red \xC2\x9Blamp\n\xFF", std::string(300, 'd')};
  hit.titleMatches = {{2, 5}, {8, 12}};
  EXPECT_EQ(hitAsText(hit, 9, true),
            "9. A \x1B[1mred\x1B[22m  \x1B[1mlamp\x1B[22m \xEF\xBF\xBD\n   /a [2J.html\n   " +
                std::string(200, 'd') + "\xE2\x80\xA6\n");
  EXPECT_THAT(hitAsText(hit, 9, false), StartsWith("9. A red  lamp \xEF\xBF\xBD\n"));
  // NOLINTBEGIN(misc-misleading-bidirectional): on purpose
  EXPECT_EQ(printable("a\x1B]0;b\x07\n\u202Ec\u2066d\u200F"), "a ]0;b  cd\u200F");
  hit.page = {"\"\\\x1F\xFF", "", "\x7F\u009B\u202E\u00E9", ""};
  // NOLINTEND(misc-misleading-bidirectional)
  EXPECT_EQ(hitAsJson(hit, 1),
            "{\"rank\":1,\"score\":0.0000,\"path\":\"\\\"\\\\\\u001f\xEF\xBF\xBD\",\"anchor\":\"\","
            "\"title\":\"\\u007f\\u009b\\u202e\u00E9\",\"description\":\"\"}\n");
}

}  // namespace
}  // namespace quorvex
