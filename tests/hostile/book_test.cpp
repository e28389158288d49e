// A malicious help book. Every healthy page is indexed, every lost one has its message, and time
// and memory stay bounded.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/damage.h"
#include "tests/support/program_run.h"

namespace quorvex {
namespace {

namespace fs = std::filesystem;
using test::repeated;
using Pages = std::vector<std::pair<std::string, std::string>>;  ///< names and contents

std::string numbered(const std::string& before, const std::string& behind, int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += before + std::to_string(i) + behind;
  return text;
}

std::string page(const std::string& title, const std::string& body = "words") {
  return "<title>" + title + "</title><body>" + body + "</body>";
}

std::string utf16(const std::string& ascii, std::string mark, bool bigEndian = false) {
  for (const char c : ascii)
    mark += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  return mark;
}

class HostileBook : public testing::Test {
 protected:
  HostileBook() {
    book.write("healthy.html", page("healthy"));
    book.write("last.html", page("last"));
  }

  void write(const Pages& pages) {
    for (const auto& [name, contents] : pages) {
      book.write(name, contents);
      names.push_back(name);
    }
  }

  /// Both forms contain the pages with these titles; all others are listed or have a message.
  void expectAll() {
    for (const std::string format : {"lsm", "beacon"}) {
      const std::string index = out.path() / format;
      const test::Ended made =
          test::ProgramRun(book.path(), {QUORVEX_PROGRAM, "-Cagvv", "-I", format, "-f", index, "."},
                           test::limitsHold ? "ulimit -v 1048576" : ":")
              .end();
      EXPECT_EQ(made.status, 0);
      EXPECT_LT(made.seconds, test::limitsHold ? 30 : 400);
      const std::string listing =
          test::ProgramRun(".", {QUORVEX_PROGRAM, "-Fv", "-I", format, "-f", index}).end().output;
      for (const std::string& title : titles)
        EXPECT_NE(listing.find("\n    Title: " + title + "\n"), std::string::npos) << title;
      for (const std::string& name : names) {
        EXPECT_TRUE(("\n" + listing).find("\n/" + name) != std::string::npos ||
                    made.errors.find(name) != std::string::npos)
            << name << ' ' << format;
      }
    }
  }

  test::TemporaryFolder book{"book"};
  test::TemporaryFolder out;
  std::vector<std::string> names;
  std::vector<std::string> titles{"healthy", "last"};
};

TEST_F(HostileBook, PagesThatCostTooMuch) {
  write({{"attributes.html", page("t", "<p" + numbered(" a", "", 100'000) + ">")},
         {"names.html", page("t", numbered("<x", ">", 100'000))},
         {"html.html", page("t", numbered("<html a", ">", 100'000))},
         {"nested.html", page("t", repeated("<div>", 1'000'000))},
         {"links.html", page("t", repeated("<a href=help:", 100'000))},
         {"link.html",
          page("t", "<a href='" + std::string(300'000, 'h') + "'>" + repeated("y<!---->", 30'000))},
         {"anchors.html", page("t", numbered("<a name=n", "></a>", 10'000))},
         {"same.html", page("t", repeated("<p id=i><a id=i>", 20'000))},
         {"title.html", page(std::string(2'000'000, 't'))},
         {"keywords.html", "<meta name=keywords content='" + repeated(",k", 500'000) + "'>"},
         {"many.html", "<meta name=keywords content='" + repeated(",many", 1'200'000) + "'>"},
         {"anchor.html", page("t", "<a name=" + std::string(2'000'000, 'n') + ">")},
         {"word.html", page("t", std::string(3'000'000, 'w'))},
         {"marks.html", page("t", "<meta charset=utf-8>a" + repeated("\xCC\x81", 500'000))},
         {"thai.html", page("t", "<meta charset=utf-8>" + repeated("\xE0\xB8\x81", 300'000))},
         {"text.html", page("t", repeated("one two. ", 1'500'000))},
         {"empty.html", ""},
         {"zeros.html", std::string(1'000'000, '\0')},
         {"huge.html", "<title>"}});
  fs::resize_file(book.path() / "huge.html", std::uintmax_t{3} << 30U);
  expectAll();
}

TEST_F(HostileBook, BytesThatAreNoText) {
  const std::string html = page("title", "text");
  titles.insert(titles.end(), {"little", "cut", "big"});
  write({{"mark.html", utf16(page("little"), "\xFF\xFE")},
         {"nomark.html", utf16(html, "")},
         {"cutmark.html", test::shrunk(utf16(page("cut"), "\xFF\xFE"), 1)},
         {"bigmark.html", utf16(page("big"), "\xFE\xFF", true)},
         {"nobigmark.html", utf16(html, "", true)},
         {"claims16.html", "<meta charset=utf-16>" + html},
         {"claims8.html",
          "<meta charset=utf-8>" + page("t", "\xE9 \xC0\xAF \xED\xA0\x80 \xF5 \xE2\x82")},
         {"unknown.html", "<meta charset=klingon>" + page("t", "\xE9")},
         {"zero.html", page("t", std::string("a\0b", 3))},
         {"robots.html", "<meta name=robots content=' noindex , anchors '>" + html},
         {"controls.html", page("t\x01\x1B[31m\x7F", "&#0;&#27;&#x110000;&#xD800;")}});
  expectAll();
  write({{"index.html", std::string(readFile(out.path() / "lsm")->bytes())}});
  expectAll();
}

TEST_F(HostileBook, NamesThatMeanSomethingElsewhere) {
  for (const std::string name : {"new\nline", "quote\"'", "per%20cent%", "num#ber", "-C", "$(id)",
                                 "back\\slash", " ", "*", "semi;colon&"}) {
    write({{name + ".html", page("odd")}});
  }
  write({{std::string(250, 'n') + ".html", page("long")}});
  book.write("\xFF\xFE.html", page(titles.emplace_back("no characters")));
  expectAll();
}

TEST_F(HostileBook, EntriesThatAreNoFiles) {
  const auto at = [&](const char* name) { return book.path() / names.emplace_back(name); };
  write({{"folder.html/inside.html", page("inside")}});
  ASSERT_EQ(::mkfifo(at("fifo.html").c_str(), 0600), 0);
  ASSERT_EQ(::mknod(at("socket.html").c_str(), S_IFSOCK | 0600, 0), 0);
  for (const auto& [name, target] :
       {std::pair("dangling.html", "nowhere"), std::pair("loop.html", "loop.html"),
        std::pair("self.html", "."), std::pair("device.html", "/dev/zero"),
        std::pair("unreadable.html", "/proc/self/mem"), std::pair("link.html", "healthy.html")}) {
    fs::create_symlink(target, at(name));
  }
  expectAll();
}

TEST_F(HostileBook, FilesThatChangeMeanwhile) {
  // The names overflow a pipe, so the program waits while printing the list.
  for (int i = 0; i < 400; ++i)
    write({{std::to_string(i) + std::string(240, 'n') + ".html", page("t")}});
  const fs::path pipe = out.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const std::string create = QUORVEX_PROGRAM " -Cvvvvv -I lsm -f \"$0/index\" . >\"$0/pipe\"";
  test::ProgramRun run(book.path(), {"/bin/sh", "-c", create, out.path()});
  std::ifstream told(pipe);
  for (std::string line; !line.starts_with("Indexing these subpaths") && std::getline(told, line);)
    continue;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const fs::path file = book.path() / names[i];
    if (i % 4 <= 1) fs::remove(file);
    if (i % 4 == 1) fs::create_directory(file);
    if (i % 4 == 2) fs::resize_file(file, i % 8 == 2 ? 3 : 100'000);
  }
  told.ignore(1 << 30);
  const test::Ended made = run.end();
  EXPECT_EQ(made.status, 0);
  const std::vector<std::string> list{QUORVEX_PROGRAM, "-F", "-I", "lsm", "-f", "index"};
  const std::string listing = test::ProgramRun(out.path(), list).end().output;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool lost = i % 4 <= 1;
    const std::string reason = i % 4 == 0 ? "No such file or directory" : "Is a directory";
    const std::string path = "/" + names[i];
    EXPECT_EQ(listing.find(path + "\n") == std::string::npos, lost) << i;
    EXPECT_EQ(made.errors.find(path + ">: " + reason) != std::string::npos, lost) << i;
  }
}

}  // namespace
}  // namespace quorvex
