#include <algorithm>
#include <array>
#include <future>
#include <map>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/time.h>
#include <unistd.h>

#include "common/files.h"
#include "common/format.h"
#include "common/output.h"
#include "common/predicate.h"
#include "common/unicode.h"
#include "common/url.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace quorvex {
namespace {

using test::printed;

/// Reads to a pipe's end.
std::string readFully(int descriptor) {
  std::string text;
  char piece[1000];
  while (const ssize_t count = ::read(descriptor, piece, sizeof(piece))) {
    if (count > 0) text.append(piece, static_cast<std::size_t>(count));
  }
  return text;
}

TEST(Paths, Standardize) {
  ::setenv("HOME", "/h", 1);
  const std::map<std::string, std::string> cases{
      {"", ""},
      {"/a/./b/../c", "/a/c"},
      {"/..", "/"},
      {"a/../..", ".."},
      {"./.", "."},
      {"~", "/h"},
      {"~/a//b", "/h/a/b"},
      {"~nobody-of-that-name/a", "~nobody-of-that-name/a"}};
  for (const auto& [path, expected] : cases)
    EXPECT_EQ(standardizePath(path), expected) << path;
}

TEST(Paths, Components) {
  const struct {
    const char* path;
    const char* folder;
    const char* last;
  } cases[] = {{"/a/b", "/a", "b"}, {"/a/b//", "/a", "b"}, {"/a", "/", "a"},  {"/", "/", "/"},
               {"a", "", "a"},      {"", "", ""},          {"a//b", "a", "b"}};
  for (const auto& [path, folder, last] : cases) {
    EXPECT_EQ(withoutLastPathComponent(path), folder) << path;
    EXPECT_EQ(lastPathComponent(path), last) << path;
  }
  EXPECT_EQ(appendPathComponent("/a/", "/b"), "/a/b");
  EXPECT_EQ(appendPathComponent("/", "b"), "/b");
}

TEST(Files, ReadWholeRegularFilesOnly) {
  const test::TemporaryFolder folder;
  folder.write("file", std::string("a\0b", 3));
  const std::string path = folder.path() / "file";
  EXPECT_EQ(readFile(path, 3)->bytes(), std::string_view("a\0b", 3));
  EXPECT_FALSE(readFile(path, 2).ok());
  ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
  const int watch = ::inotify_init1(IN_NONBLOCK);
  ::inotify_add_watch(watch, (folder.path() / "fifo").c_str(), IN_OPEN);
  for (const char* other : {"fifo", "missing", ""})
    EXPECT_FALSE(readFile(folder.path() / other).ok());
  std::array<char, 256> opened{};
  EXPECT_EQ(::read(watch, opened.data(), opened.size()), -1) << "opening can do harm to a device";
  ::close(watch);
  EXPECT_FALSE(readFile(path + std::string("\0x", 2)).ok());
  EXPECT_FALSE(readFile("/dev/null").ok());
  // A file that reports no size.
  EXPECT_GT(readFile("/proc/self/status")->size(), 0U);
}

TEST(Output, GoesOnAfterInterruptionsAndFullPipes) {
  struct sigaction nothing = {};
  struct sigaction previous = {};
  nothing.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &nothing, &previous);
  const itimerval often{{0, 200}, {0, 200}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  std::string text(3'000'000, '\0');
  for (std::size_t i = 0; i < text.size(); ++i)
    text[i] = static_cast<char>(i % 251);
  for (const int flags : {0, O_NONBLOCK}) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    ::fcntl(pipe[1], F_SETFL, flags);
    auto reader = std::async(std::launch::async, [&] { return readFully(pipe[0]); });
    EXPECT_TRUE(writeFully(pipe[1], text)) << flags;
    ::close(pipe[1]);
    EXPECT_TRUE(reader.get() == text);
    ::close(pipe[0]);
    EXPECT_FALSE(writeFully(pipe[1], text));
  }
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &previous, nullptr);
}

TEST(Urls, WhatParses) {
  for (const char* good : {"", "http://a/b?c#d", "a/b", "/a%20b", "x-y.z+1:q", "//host", "#",
                           "?a=b", "[", "http://[::1]/"}) {
    EXPECT_TRUE(URL::parse(good)) << good;
  }
  for (const char* bad : {"a b", "a%2", "a%zz", "a\"b", "1a:b", "a<b", "\xC3\xA4"}) {
    EXPECT_FALSE(URL::parse(bad)) << bad;
  }
}

TEST(Urls, PathsKeepEveryByte) {
  const std::string path = "/a b/%41;#?\xFF/\xC3\xA4";
  EXPECT_EQ(percentEncodePath(path), "/a%20b/%2541%3B%23%3F%FF/%C3%A4");
  EXPECT_EQ(percentDecode(percentEncodePath(path)), path);
  EXPECT_EQ(percentDecode("%4a%4%zz%"), "J%4%zz%");
  EXPECT_EQ(URL::fileURL(path)->path(), path);
  EXPECT_EQ(URL::parse("http://h/a%20b?c#d")->path(), "/a b");
  EXPECT_FALSE(URL::fileURL("a"));
}

TEST(Unicode, IllFormedTextIsRepairedSequenceBySequence) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {{"ascii only, more than eight", "ascii only, more than eight"},
               {"12345678\xFFz", "12345678\xEF\xBF\xBDz"},
               {"\xC3", "\xEF\xBF\xBD"},
               {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
               {"\xF0\x9F\x98x", "\xEF\xBF\xBDx"},
               {"\xEF\xBF\xBD", "\xEF\xBF\xBD"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(validUtf8(text), expected);
    EXPECT_EQ(isValidUtf8(text), std::string_view(text) == expected);
  }
  EXPECT_EQ(characterCount("a\xC3\xA4\xF0\x9F\x98\x80\xFF"), 4U);
}

TEST(Unicode, TrimsAndFolds) {
  EXPECT_EQ(trimWhitespace("\t\xC2\xA0 a b\xE3\x80\x80"), "a b");
  EXPECT_EQ(trimWhitespace("\na\n"), "\na\n");
  EXPECT_EQ(trimWhitespaceAndNewlines("\r\n\xE2\x80\xA8\xC2\x85 a\xFF\v"), "a\xFF");
  EXPECT_EQ(trimWhitespaceAndNewlines(" \n"), "");
  EXPECT_EQ(lowercased("STRA\xC3\x9F"
                       "E \xC3\x84"),
            "stra\xC3\x9F"
            "e \xC3\xA4");
  EXPECT_EQ(caseFolded("STRA\xC3\x9F"
                       "E"),
            "strasse");
  std::vector<std::string> texts{"b", "a", "B", "A", "\xC3\xA4"};
  sortCaseInsensitively(texts);
  EXPECT_EQ(texts, (std::vector<std::string>{"A", "a", "B", "b", "\xC3\xA4"}));
}

TEST(Unicode, CharactersAreReadAsTheLibraryReadsThem) {
  // Every way to begin and to continue a sequence, whole and cut.
  static constexpr std::string_view bytes =
      "a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEF\xF0\xF4\xFF";
  for (const char first : bytes) {
    for (const char second : bytes) {
      for (const char third : bytes) {
        const std::string text = {first, second, third};
        for (std::size_t size = 1; size <= text.size(); ++size) {
          std::size_t end = 0;
          std::size_t wantedEnd = 0;
          const std::string_view part = std::string_view(text).substr(0, size);
          ASSERT_EQ(nextCharacter(part, end), nextRareCharacter(part, wantedEnd)) << part;
          ASSERT_EQ(end, wantedEnd) << part;
        }
      }
    }
  }
}

TEST(Predicates, MatchTheWholeTextInAnyCase) {
  const struct {
    const char* pattern;
    const char* text;
    bool matches;
  } cases[] = {{"a.*", "Abc", true},
               {"a", "ab", false},
               {".*", "", true},
               {".*", "a\nb", true},
               {"\xC3\xA4+", "\xC3\x84", true}};
  for (const auto& [pattern, text, matches] : cases) {
    EXPECT_EQ(*Predicate::matching(pattern)->evaluate(text), matches) << pattern;
  }
  EXPECT_FALSE(Predicate::matching("\xFF").ok());
  EXPECT_FALSE(Predicate::matching("(")->evaluate("x").ok());
  // Endless backtracking hits the time limit.
  EXPECT_FALSE(Predicate::matching("(a+)+(b+)+(c*)*d")->evaluate(std::string(60, 'a')).ok());
}

TEST(Predicates, KnownPatternsAnswerAsTheLibraryDoes) {
  std::vector<std::string> texts = {"",
                                    ".htm",
                                    ".html",
                                    "html",
                                    "a.htm",
                                    "a.html ",
                                    "a.html\n",
                                    "a.htm\r\n",
                                    "a.html\u2028",
                                    "a\n.html",
                                    "a.htmll",
                                    "a.shtml",
                                    "a.HtM",
                                    "\xFF.html",
                                    "\xE2.htm",
                                    "a.htm\xCC",
                                    "a.html\u0308",
                                    std::string("\0.html", 6),
                                    std::string("a.html\0", 7),
                                    std::string(100'000, '.') + "html"};
  // A character of up to three bytes, ill-formed ones included, in place of each or behind all.
  for (unsigned character = 1; character < 0x10000; ++character) {
    const auto part = [&](unsigned bits, unsigned shift, unsigned mask) {
      return static_cast<char>(bits | (character >> shift & mask));
    };
    std::string bytes = {part(0xE0, 12, 0xF), part(0x80, 6, 0x3F), part(0x80, 0, 0x3F)};
    if (character < 0x800) bytes = {part(0xC0, 6, 0x1F), part(0x80, 0, 0x3F)};
    if (character < 0x80) bytes = {part(0, 0, 0x7F)};
    for (std::size_t at = 1; at <= 6; ++at)
      texts.push_back(std::string("a.html").replace(at, 1 - at / 6, bytes));
  }
  for (const std::string_view pattern : {Predicate::anyText, Predicate::pageNames}) {
    const Predicate known = *Predicate::matching(pattern);
    const Predicate library = *Predicate::matching("(?:" + std::string(pattern) + ")");
    for (const std::string& text : texts)
      ASSERT_EQ(*known.evaluate(text), *library.evaluate(text)) << text;
  }
}

TEST(Formats, ArgumentsPrintAsWhatTheyAre) {
  EXPECT_EQ(formatText("%@ %s %d %hhd 100%% %x", {"a", std::string("b"), -1, std::uint8_t{200}}),
            "a b -1 200 100% %x");
  EXPECT_EQ(formatText("%@|%@|%@|%", {std::nullopt, std::optional<std::string>(), Error{"e"}}),
            "(null)|(null)|e|%");
  EXPECT_EQ(formatText("%@ %@", {"%@"}), "%@ (null)");
}

TEST(Log, LevelsAndStreams) {
  const auto log = [] {
    for (int level = 0; level <= 4; ++level)
      QXLog(level, "%d", level);
  };
  EXPECT_EQ(printed(-1, log), "");
  EXPECT_EQ(printed(2, log), "0\n1\n2\n");
  EXPECT_EQ(printed(9, log), "3\n4\n0\n1\n2\n");  // standard output first
}

TEST(Log, LinesOfSeveralThreadsStayWhole) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  auto reader = std::async(std::launch::async, [&] { return readFully(pipe[0]); });
  const int before = ::dup(STDERR_FILENO);
  ::dup2(pipe[1], STDERR_FILENO);
  ::close(pipe[1]);
  setLogVerbosity(0);
  {
    std::vector<std::jthread> writers;
    for (const char letter : {'a', 'b', 'c'})  // each writes more than a pipe takes at once
      writers.emplace_back([=] { QXLog(0, "%@", std::string(1'000'000, letter)); });
  }
  setLogVerbosity(-1);
  ::dup2(before, STDERR_FILENO);
  ::close(before);
  std::string lines = reader.get();
  ::close(pipe[0]);
  EXPECT_EQ(lines.size(), 3'000'003U);
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
  EXPECT_EQ(lines.size(), 6U) << lines.substr(0, 100);
}

}  // namespace
}  // namespace quorvex
