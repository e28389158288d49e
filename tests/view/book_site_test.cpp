#include "view/book/book_site.h"

#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/temporary_folder.h"
#include "view/book/conditional.h"

namespace quorvex::view {
namespace {

class Book : public testing::Test {
 protected:
  Book() {
    _folder.write("letters.txt", "abcdefghij");
    _folder.write("empty.bin", "");
    _folder.write("guide/index.htm", "<p>Guide");
    _folder.write("guide/a:b c/index.html", "<p>Deep");
    const timespec modified{784111777, 5};
    const timespec times[] = {modified, modified};
    ::utimensat(AT_FDCWD, (_folder.path() / "letters.txt").c_str(), times, 0);
    _site.emplace(*BookFolder::open(_folder.path().string()),
                  [](std::string_view bytes, const std::string& question) {
                    return std::string(bytes) + '[' + question + ']';
                  });
  }

  Response get(std::string path, const std::string& header = "", std::string value = "") const {
    Request request{"GET", "", std::move(path), "", {}};
    const std::size_t question = request.path.find('?');
    if (question != request.path.npos) {
      request.query = request.path.substr(question + 1);
      request.path.resize(question);
    }
    if (!header.empty()) request.headers.emplace(header, std::move(value));
    return _site->answer(request);
  }
  static std::string headerIn(const Response& response, std::string_view name) {
    for (const auto& [header, value] : response.headers) {
      if (header == name) return value;
    }
    return {};
  }

  test::TemporaryFolder _folder;
  std::optional<BookSite> _site;
};

TEST_F(Book, SendsRangesAndAnswersConditions) {
  const std::string tag = headerIn(get("/letters.txt"), "ETag");
  const std::string date = "Sun, 06 Nov 1994 08:49:37 GMT";
  const std::string later = "Sun, 06 Nov 1994 08:49:38 GMT";
  const std::string earlier = "Sunday, 06-Nov-94 08:49:36 GMT";
  EXPECT_EQ(headerIn(get("/letters.txt"), "Last-Modified"), date);
  struct Case {
    const char* header;
    std::string value;
    unsigned status;
    std::uint64_t offset = 0;
    std::uint64_t size = 10;
  };
  const std::vector<Case> cases = {
      {"range", "bytes=2-4", 206, 2, 3},
      {"range", "bytes=9-", 206, 9, 1},
      {"range", "BYTES= 8-99 ", 206, 8, 2},
      {"range", "bytes=-3", 206, 7, 3},
      {"range", "bytes=-99", 206},
      {"range", "bytes=0-99999999999999999999999", 206},
      {"range", "bytes=10-", 416},
      {"range", "bytes=99999999999999999999999-", 416},
      {"range", "bytes=-0", 416},
      {"range", "bytes=4-2", 200},
      {"range", "bytes=1-2,4-5", 200},
      {"range", "bytes=", 200},
      {"range", "bytes=-", 200},
      {"range", "bytes=--1", 200},
      {"range", "bytes=+1-2", 200},
      {"range", "letters=1-2", 200},
      {"if-none-match", tag, 304},
      {"if-none-match", "\"x\", W/" + tag, 304},
      {"if-none-match", " * ", 304},
      {"if-none-match", "\"x\"", 200},
      {"if-none-match", "\"x", 200},
      {"if-modified-since", date, 304},
      {"if-modified-since", "Sun Nov  6 08:49:38 1994", 304},
      {"if-modified-since", earlier, 200},
      {"if-modified-since", "yesterday", 200},
      {"if-match", tag, 200},
      {"if-match", "*", 200},
      {"if-match", "W/" + tag, 412},
      {"if-match", "\"x\"", 412},
      {"if-unmodified-since", date, 200},
      {"if-unmodified-since", earlier, 412},
  };
  for (const Case& c : cases) {
    const Response response = get("/letters.txt", c.header, c.value);
    EXPECT_EQ(response.status, c.status) << c.header << ": " << c.value;
    const auto* body = std::get_if<FileBody>(&response.body);
    ASSERT_EQ(body != nullptr, c.status < 400) << c.value;
    if (body == nullptr) continue;
    EXPECT_EQ(std::pair(body->offset, body->size), std::pair(c.offset, c.size)) << c.value;
  }
  EXPECT_EQ(headerIn(get("/letters.txt", "range", "bytes=2-4"), "Content-Range"), "bytes 2-4/10");
  EXPECT_EQ(headerIn(get("/letters.txt", "range", "bytes=10-"), "Content-Range"), "bytes */10");
  EXPECT_EQ(get("/empty.bin", "range", "bytes=-1").status, 416);

  // The second condition counts only without the first, and a range only while it still fits.
  Request request{"GET", "", "/letters.txt", "", {{"if-none-match", "\"x\""}}};
  request.headers["if-modified-since"] = date;
  EXPECT_EQ(_site->answer(request).status, 200);
  request.headers = {{"range", "bytes=2-4"}};
  for (const auto& [condition, status] : std::vector<std::pair<std::string, unsigned>>{
           {tag, 206}, {date, 206}, {"W/" + tag, 200}, {"\"x\"", 200}, {later, 200}}) {
    request.headers["if-range"] = condition;
    EXPECT_EQ(_site->answer(request).status, status) << condition;
  }
}

TEST_F(Book, FindsPagesOfFolders) {
  struct Case {
    const char* path;
    unsigned status;
    std::string body;
    std::string location;
  };
  const std::vector<Case> cases = {
      {"/guide/", 200, "<p>Guide[]", ""},
      {"/guide/index.htm?quorvex-question=a+b", 200, "<p>Guide[a b]", ""},
      {"/guide", 301, "", "./guide/"},
      {"/guide/a:b%20c?x=/", 301, "", "./a:b%20c/?x=/"},
      {"/guide/a:b%20c/", 200, "<p>Deep[]", ""},
      {"/guide/index.htm/", 404, "The book has no such page", ""},
      {"/", 404, "The book has no such page", ""},
      {"/../letters.txt", 404, "The book has no such page", ""},
  };
  for (const Case& c : cases) {
    const Response response = get(c.path);
    EXPECT_EQ(response.status, c.status) << c.path;
    EXPECT_THAT(std::get<std::string>(response.body), testing::HasSubstr(c.body)) << c.path;
    EXPECT_EQ(headerIn(response, "Location"), c.location) << c.path;
  }
  const std::string tag = headerIn(get("/guide/"), "ETag");
  EXPECT_EQ(get("/guide/", "if-none-match", tag).status, 304);
  EXPECT_EQ(get("/guide/?quorvex-question=a", "if-none-match", tag).status, 200);
}

TEST_F(Book, NamesTypes) {
  for (const auto& [name, type, disposition] :
       std::vector<std::tuple<std::string, std::string, std::string>>{
           {"A.HTML", "text/html; charset=utf-8", ""},
           {"a.xhtml", "application/xhtml+xml", ""},
           {"a.b.css", "text/css", ""},
           {"a.mjs", "text/javascript", ""},
           {"a.woff2", "font/woff2", ""},
           {"a.xsl", "application/xml", ""},
           {"a.exe", "application/octet-stream", "attachment"},
           {"html", "application/octet-stream", "attachment"}}) {
    _folder.write(name, "x");
    EXPECT_EQ(headerIn(get("/" + name), "Content-Type"), type);
    EXPECT_EQ(headerIn(get("/" + name), "Content-Disposition"), disposition) << name;
  }
}

}  // namespace
}  // namespace quorvex::view
