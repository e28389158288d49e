#include <filesystem>

#include <gmock/gmock.h>

#include "search/hit_json.h"
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
    _folder.write(
        "book/lamp.html",
        "<title>Lamp</title><body>The lamp burns. No water.<h2 id=parts>Parts</h2><dl>"
        "<dt id='lamp.glow'>Lamp.glow(<i>level</i>)<dd>The lamp glows at <b>night</b>.</dl>"
        "<h2 id='a b%'>Care</h2><p>Dust the lamp. Do not dust it while it glows.");
    test::ProgramRun quorvex(_folder.path(), {QUORVEX_PROGRAM, "-aCIlsm", "-f", "index", "book"});
    EXPECT_EQ(quorvex.end().status, 0);
  }
  std::string index() const { return (_folder.path() / "index").string(); }

  TemporaryFolder _folder;
};

TEST_F(SearchProgram, GivesAStatusForEachOutcome) {
  const std::string file = index();
  const std::string book = (_folder.path() / "book").string();
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
      {{file, "lamp", "--json"}, 2},
      {{file, "--", "lamp", "--json"}, 0},
      {{file, "lamp", "--bright", "-x"}, 0},
      {{"--names", "glow", file}, 0},
      {{"--names", "nonesuch", file}, 1},
      {{"--names", "a", "--anchor", "b", file}, 2},
      {{"--open", file, "lamp"}, 2},
      {{"--open=0", "--book", book, file, "lamp"}, 2},
      {{"--open=9", "--book", book, file, "lamp"}, 1},
      {{"--book", book, file, "lamp"}, 0},
      {{"--book", book + "x", file, "lamp"}, 3},
      {{"--version"}, 0},
      {{"--help"}, 0},
      {{"--clear-cache", file}, 2},
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
      {{"--index", file, "water"}, 0},
      {{"--index", file}, 2},
      {{"--index=", "water"}, 2},
      {{"--index", file, "--index", file, "--book", book, "water"}, 2},
      {{"--index", file, "--index", file, "--related", "/pump.html"}, 2},
      {{"--index", file, "--index", file, "--semantic", "water"}, 1},
      {{"--index", file, "--index", file + "x", "water"}, 3},
      {{file + "x", "water"}, 3},
      {{QUORVEX_PROGRAM, "water"}, 3},
      {{_folder.path().string(), "water"}, 3},
  };
  for (const auto& [arguments, status] : cases)
    EXPECT_EQ(run(arguments).status, status) << testing::PrintToString(arguments);
}

TEST_F(SearchProgram, ListsHits) {
  EXPECT_EQ(run({index(), "water", "-lamps"}).output,
            "1. Pump \"A\"\n   /pump.html#start\n   On pumps\n");
  EXPECT_EQ(run({"--json", index(), "pumps"}).output,
            "{\"rank\":1,\"score\":1.0000,\"path\":\"/pump.html\",\"fragment\":\"start\","
            "\"address\":\"/pump.html#start\",\"title\":\"Pump \\\"A\\\"\","
            "\"titleMatches\":[{\"characters\":[0,4],\"bytes\":[0,4]}],\"headings\":[],"
            "\"description\":\"On pumps\",\"snippet\":null,\"places\":[{\"fragment\":\"start\","
            "\"score\":0.9152,\"headings\":[],\"snippet\":null}]}\n"
            "{\"hits\":1,\"state\":\"answered\",\"suggestion\":null,"
            "\"searched\":null,\"book\":{\"title\":\"Lamp\",\"language\":\"en_US_POSIX\"}}\n");
  EXPECT_EQ(run({"--anchor", "start", index()}).output, "/pump.html\n");
  EXPECT_EQ(run({"--\x1B[2J"}).errors,
            "quorvex-search: Unknown option: -- [2J\nTry 'quorvex-search --help'.\n");
  EXPECT_THAT(run({"-h"}).output, StartsWith("Usage: quorvex-search"));
}

TEST_F(SearchProgram, ClearsWhatIsKeptAndNothingElse) {
  const std::string folder = _folder.path().string();
  const auto clear = [&] {
    return test::ProgramRun(folder, {"/usr/bin/env", "XDG_CACHE_HOME=" + folder,
                                     QUORVEX_SEARCH_PROGRAM, "--clear-cache"})
        .end();
  };
  EXPECT_EQ(clear().output, "Removed 0 files, 0 bytes, from " + folder + "/quorvex\n");
  const std::string hash = "0123456789abcdef";
  const std::vector<std::pair<std::string, bool>> files = {
      {hash + '-' + hash + ".bchelpindex", false},
      {"items-" + hash + '-' + hash + hash + ".bchelpindex", false},
      {"items-secret", false},
      {".quorvex-01234567", false},
      {"my-own-index.bchelpindex", true},
      {"cafe-beef.bchelpindex", true},
      {hash + hash + ".bchelpindex", true},
      {hash + '-' + hash, true},
      {"folder/" + hash + '-' + hash + ".bchelpindex", true},
  };
  for (const auto& [name, stays] : files)
    _folder.write("quorvex/" + name, "four");
  std::filesystem::rename(folder + "/quorvex", folder + "/elsewhere");
  std::filesystem::create_directory_symlink("elsewhere", folder + "/quorvex");
  EXPECT_EQ(clear().status, 3);
  std::filesystem::remove(folder + "/quorvex");
  std::filesystem::rename(folder + "/elsewhere", folder + "/quorvex");
  EXPECT_EQ(clear().output, "Removed 4 files, 16 bytes, from " + folder + "/quorvex\n");
  for (const auto& [name, stays] : files)
    EXPECT_EQ(std::filesystem::exists(folder + "/quorvex/" + name), stays) << name;
}

TEST_F(SearchProgram, SearchesSeveralBooks) {
  _folder.write("other/oil.html", "<title>Oil</title><body><a name=start></a>Oil burns, too.");
  test::ProgramRun quorvex(_folder.path(), {QUORVEX_PROGRAM, "-aCIlsm", "-f", "2", "other"});
  ASSERT_EQ(quorvex.end().status, 0);
  const std::string other = (_folder.path() / "2").string();
  const auto both = [&](std::vector<std::string> rest) {
    rest.insert(rest.begin(), {"--index", index(), "--index", other});
    return run(rest).output;
  };
  EXPECT_EQ(both({"--", "-lamp", "burns"}), "1. Oil\n   /oil.html#start\n   Oil\n");
  EXPECT_THAT(both({"--json", "lamp", "oil"}), HasSubstr("\"index\":2,\"book\":\"Oil\",\"path\""));
  EXPECT_THAT(both({"--json", "lamp"}), HasSubstr("\"books\":[{\"title\":\"Lamp\","));
  EXPECT_EQ(both({"--names", "o"}), "Oil  /oil.html  Oil\n");
  EXPECT_EQ(both({"--anchor", "start"}), "/pump.html  Lamp\n/oil.html  Oil\n");
  const std::string folder = _folder.path().string();
  EXPECT_THAT(both({"--book", folder + "/book", "--book", folder + "/other", "oil"}),
              HasSubstr("Oil burns, too."));
  EXPECT_THAT(run({"--index", index(), "--index", other + "x", "oil"}).errors, HasSubstr("2x: "));
}

TEST_F(SearchProgram, QuotesAndOpensThePlace) {
  const std::string book = (_folder.path() / "book").string();
  EXPECT_EQ(run({"--book", book, "-n1", index(), "glow()"}).output,
            "1. Lamp\n   /lamp.html#lamp.glow\n   Parts \u203A Lamp.glow\n"
            "   Lamp.glow(level) The lamp glows at night. Care Dust the lamp. "
            "Do not dust it while it glows.\n");
  EXPECT_EQ(run({"--names", "lamp.gl", index()}).output, "Lamp.glow  /lamp.html#lamp.glow\n");
  const std::string json = run({"--json", "--book", book, "-n1", index(), "dust"}).output;
  EXPECT_THAT(json, HasSubstr("\"headings\":[\"Care\"]"));
  EXPECT_THAT(json, HasSubstr("{\"characters\":[22,26],\"bytes\":[22,26]}"));
  EXPECT_THAT(json, HasSubstr("}\n{\"hits\":1,\"state\":\"answered\",\"suggestion\":null,"));
  EXPECT_THAT(run({"--json", index(), "lampp"}).output,
              HasSubstr("\"suggestion\":\"lamp\",\"searched\":\"lamp\","));

  _folder.write("browser", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.log\"\n");
  const std::filesystem::path browser = _folder.path() / "browser";
  std::filesystem::permissions(browser, std::filesystem::perms::owner_all);
  const auto open = [&](const std::string& browsers) {
    return test::ProgramRun(".", {"env", "BROWSER=" + browsers, QUORVEX_SEARCH_PROGRAM, "--open",
                                  "--book", book, index(), "dust"})
        .end();
  };
  EXPECT_EQ(open("nonesuch:" + browser.string() + " --new %s").status, 0);
  const Result<Data> log = readFile(browser.string() + ".log");
  ASSERT_TRUE(log);
  EXPECT_EQ(log->bytes(), "--new\nfile://" + book + "/lamp.html#a%20b%25\n");
  EXPECT_EQ(open("nonesuch").status, 5);
}

TEST_F(SearchProgram, TellsWhatItSearchedForAndWhy) {
  const std::string file = index();
  EXPECT_EQ(run({file, "watr"}).errors, "quorvex-search: Showing results for water\n");
  const test::Ended explained = run({"--explain", file, "moving"});
  EXPECT_THAT(explained.errors, HasSubstr("\nmoving: moves (1 page)\n"));
  EXPECT_THAT(explained.output, HasSubstr("   On pumps\n   score 1.000 = words 1.000\n"));
  const std::string json = run({"--explain", "--json", file, "watr"}).output;
  EXPECT_THAT(json, HasSubstr(",\"parts\":[{\"name\":\"words\",\"value\":"));
  EXPECT_THAT(json, HasSubstr("\"searched\":\"water\",\"explanation\":[\"Ranked by words"));
}

TEST(HitText, WrapsBetweenWords) {
  Hit hit;
  hit.page = {"/a.html", "", "One two three four", ""};
  hit.titleMatches = {{4, 13}};
  hit.places = {{"", {"Way"}, 1, "\u4F60\u597D\u4E16\u754C\u4F60\u597D", {}}};
  EXPECT_EQ(hitAsText(hit, 1, {true, 13}),
            "1. One \x1B[1mtwo\n   three\x1B[22m four\n   /a.html\n   Way\n"
            "   \u4F60\u597D\u4E16\u754C\u4F60\n   \u597D\n");
  hit.places = {};
  hit.score = 1;
  hit.parts = {{"words", 1.5}, {"zero", 0.0001}, {"c\x1B", -0.5001}, {"title", 0.0001}};
  EXPECT_THAT(hitAsText(hit, 1, {false, 16}),
              testing::EndsWith("\n   score 1.000 =\n   words 1.500 -\n   c 0.500\n"));
}

TEST(HitText, EmphasisesMatchesAndNothingElseMovesTheCursor) {
  Hit hit;
  hit.page = {"/a\x1B[2J.html", "", "A red \xC2\x9Blamp\n\xFF", std::string(300, 'd')};
  hit.titleMatches = {{2, 5}, {8, 12}};
  EXPECT_EQ(hitAsText(hit, 9, {true, 0}),
            "9. A \x1B[1mred\x1B[22m  \x1B[1mlamp\x1B[22m \xEF\xBF\xBD\n   /a [2J.html\n   " +
                std::string(200, 'd') + "\xE2\x80\xA6\n");
  EXPECT_THAT(hitAsText(hit, 9, {}), StartsWith("9. A red  lamp \xEF\xBF\xBD\n"));
  // NOLINTBEGIN(misc-misleading-bidirectional): on purpose
  EXPECT_EQ(printable("a\x1B]0;b\x07\n\u202Ec\u2066d\u200F"), "a ]0;b  cd\u200F");
  hit.page = {"\"\\\x1F\xFF", "", "\x7F\u009B\u202E\u00E9", ""};
  // NOLINTEND(misc-misleading-bidirectional)
  hit.places = {{"#\"", {}, 1, std::nullopt, {}}};
  EXPECT_EQ(
      hitAsJson(hit, 1),
      "{\"rank\":1,\"score\":0.0000,\"path\":\"\\\"\\\\\\u001f\xEF\xBF\xBD\",\"fragment\":"
      "\"#\\\"\",\"address\":\"%22%5C%1F%FF#%23%22\",\"title\":\"\\u007f\\u009b\\u202e\u00E9\","
      "\"titleMatches\":[{\"characters\":[2,3],\"bytes\":[2,5]},"
      "{\"characters\":[4,4],\"bytes\":[8,12]}],\"headings\":[],\"description\":\"\",\"snippet\":"
      "null,\"places\":[{\"fragment\":\"#\\\"\","
      "\"score\":1.0000,\"headings\":[],\"snippet\":null}]}\n");
}

}  // namespace
}  // namespace quorvex
