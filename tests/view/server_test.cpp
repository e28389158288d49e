#include "view/http/server.h"

#include <regex>
#include <thread>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "tests/support/temporary_folder.h"
#include "view/book/book_site.h"
#include "view/site.h"

namespace quorvex::view {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string viewSecret(32, '1');
const std::string bookSecret(32, '2');

/// A server whose interface answers with what it is asked for.
class Served : public testing::Test {
 protected:
  void start(Server::Limits limits = {}, bool allowNetwork = false) {
    _folder.write("page.html", "<p>Page");
    _folder.write("letters.txt", "abcdefghij");
    auto listener = Listener::open(0);
    ASSERT_TRUE(listener);
    _port = listener->port();
    const auto view = [](const Request& request) {
      if (request.path == "long") return Response{200, {}, std::string(20'000'000, 'x')};
      if (request.path == "memory") throw std::bad_alloc();
      return Response{200, {}, "<" + request.path + "?" + request.query + ">"};
    };
    const BookSite book(*BookFolder::open(_folder.path().string()),
                        [](std::string_view bytes, const auto&) { return std::string(bytes); });
    _site.emplace(Origins{_port, viewSecret, bookSecret, allowNetwork}, view,
                  [book](const Request& request) { return book.answer(request); });
    auto server = Server::start(
        *std::move(listener), [this](const auto& request) { return _site->answer(request); },
        limits);
    ASSERT_TRUE(server);
    _server = *std::move(server);
  }

  Descriptor connected() const {
    Descriptor connection(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(_port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(connection.get(), reinterpret_cast<sockaddr*>(&address), sizeof address),
              0);
    const timeval patience{10, 0};
    ::setsockopt(connection.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    return connection;
  }
  /// "$V", "$B" stand for the hosts, "$v" for the path of the interface.
  void send(const Descriptor& connection, std::string text) const {
    const std::string port = ":" + std::to_string(_port);
    text = std::regex_replace(text, std::regex("\\$V"), "Host: 127.0.0.1" + port + "\r\n");
    text = std::regex_replace(text, std::regex("\\$B"),
                              "Host: " + bookSecret + ".localhost" + port + "\r\n");
    text = std::regex_replace(text, std::regex("\\$v"), "/" + viewSecret + "/");
    ::send(connection.get(), text.data(), text.size(), MSG_NOSIGNAL);
  }
  /// Everything until the server closes the connection.
  static std::string received(const Descriptor& connection) {
    std::string all(std::size_t{64} * 1024, '\0');
    std::size_t size = 0;
    for (;;) {
      if (size == all.size()) all.resize(size * 2);
      const ssize_t count = ::recv(connection.get(), all.data() + size, all.size() - size, 0);
      EXPECT_TRUE(count >= 0 || errno == ECONNRESET) << "still open";
      if (count <= 0) break;
      size += static_cast<std::size_t>(count);
    }
    all.resize(size);
    return all;
  }
  std::string answerTo(const std::string& text) const {
    const Descriptor connection = connected();
    send(connection, text);
    return received(connection);
  }

  test::TemporaryFolder _folder;
  std::uint16_t _port = 0;
  std::optional<Site> _site;
  std::unique_ptr<Server> _server;
};

std::string statusesIn(const std::string& answer) {
  static const std::regex line("HTTP/1\\.1 (\\d+)");
  std::string statuses;
  for (std::sregex_iterator at(answer.begin(), answer.end(), line), end; at != end; ++at)
    statuses += (statuses.empty() ? "" : " ") + (*at)[1].str();
  return statuses;
}

TEST_F(Served, AnswersEachRequest) {
  start();
  const std::string end = "Connection: close\r\n\r\n";
  const std::string get = "GET $vsearch?q=a HTTP/1.1\r\n$V";
  const std::string page = "GET /page.html HTTP/1.1\r\n$B";
  const auto view = [&](const std::string& path) { return "GET " + path + " HTTP/1.1\r\n$V"; };
  const auto book = [&](const std::string& path) { return "GET " + path + " HTTP/1.1\r\n$B"; };
  const auto header = [&](const std::string& text) { return text + "\r\n" + end; };
  const std::string navigation = "Sec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: document";
  struct Case {
    std::string request;
    std::string statuses;
    std::string part;
  };
  const std::vector<Case> cases = {
      {get + end, "200", "<search?q=a>"},
      {page + end, "200", "<p>Page"},
      {page + "\r\n" + get + "\r\n" + page + end, "200 200 200", ""},  // sent at once
      {"HEAD /page.html HTTP/1.1\r\n$B\r\n" + get + end, "200 200", "Content-Length: 7"},
      {book("/letters.txt") + header("Range: bytes=3-4"), "206", "\r\n\r\nde"},
      {"GET $vx HTTP/1.0\r\n$V\r\n", "200", "<x?>"},
      // hosts
      {"GET $v HTTP/1.1\r\n" + end, "400", ""},
      {"GET $v HTTP/1.1\r\nHost: evil.example\r\n" + end, "421", ""},
      {"GET $v HTTP/1.1\r\nHost: localhost\r\n" + end, "421", ""},
      {get + "$B" + end, "400", ""},
      {"GET $v HTTP/1.1\r\nHost: 127.0.0.1\r\n" + end, "421", ""},
      {book("$v") + end, "404", ""},
      {view("/page.html") + end, "404", ""},
      // secrets
      {view("/") + end, "404", ""},
      {view("/" + viewSecret) + end, "404", ""},
      {view("/" + std::string(31, '1') + "2/") + end, "404", ""},
      {view("/" + viewSecret + "1/") + end, "404", ""},
      {view("/%31" + viewSecret.substr(1) + "/") + end, "404", ""},
      // paths
      {book("/../page.html") + end, "404", ""},
      {book("/%2e%2e/etc/passwd") + end, "404", ""},
      {book("//etc/passwd") + end, "404", ""},
      {book("/page.html\\") + end, "404", ""},
      {view("http://evil.example/") + end, "400", ""},
      {"OPTIONS * HTTP/1.1\r\n$V" + end, "400", ""},
      {book("/" + std::string(5000, 'a')) + end, "404", ""},
      {book("/" + std::string(70'000, 'a')) + end, "414", ""},
      // methods and bodies
      {"POST $vsearch HTTP/1.1\r\n$V" + end, "405", "Allow: GET, HEAD"},
      {"OPTIONS /page.html HTTP/1.1\r\n$B" + end, "405", ""},
      {"TRACE $v HTTP/1.1\r\n$V" + end, "405", ""},
      {"POST $v HTTP/1.1\r\n$VContent-Length: 5\r\n\r\nabcde" + get + end, "405", ""},
      {get + "Content-Length: 30\r\n\r\n" + get + end, "413", ""},
      {get + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n" + get + end, "413", ""},
      {get + "Content-Length: 0\r\n" + end, "200", ""},
      // who asks
      {get + header("Sec-Fetch-Site: same-origin"), "200", ""},
      {get + header("Sec-Fetch-Site: none"), "200", ""},
      {get + header("Sec-Fetch-Site: same-site"), "403", ""},
      {get + header("Sec-Fetch-Site: cross-site"), "403", ""},
      {view("/wrong/") + header("Sec-Fetch-Site: cross-site"), "403", ""},
      {view("$v") + header("Sec-Fetch-Site: cross-site\r\n" + navigation), "200", "<?>"},
      {view("$v") + header("Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate\r\n"
                           "Sec-Fetch-Dest: iframe"),
       "403", ""},
      {get + header("Sec-Fetch-Site: cross-site\r\n" + navigation), "404", ""},
      {page + header("Sec-Fetch-Dest: iframe"), "200", ""},
      {page + header("Sec-Fetch-Dest: document"), "403", "Open it in the view"},
      // what is no request
      {get + header("X: " + std::string(70'000, 'a')), "431", ""},
      {"GET $v\r\n\r\n", "400", ""},
      {std::string("\x16\x03\x01\r\n\r\n", 7), "", ""},
      {view("$vmemory") + end, "503", ""},
      {get + end, "200", ""},  // still there
  };
  for (const Case& c : cases) {
    const std::string answer = answerTo(c.request);
    EXPECT_EQ(statusesIn(answer), c.statuses) << c.request.substr(0, 200);
    EXPECT_THAT(answer, HasSubstr(c.part)) << c.request.substr(0, 200);
    // Who does not know the book's host does not learn it.
    const bool isRefused = c.statuses.starts_with('4') && c.request.find("$B") == std::string::npos;
    EXPECT_FALSE(isRefused && answer.find(bookSecret) != std::string::npos) << c.request;
  }
}

TEST_F(Served, KeepsOriginsApart) {
  start();
  const std::string view = answerTo("GET $v HTTP/1.1\r\n$VConnection: close\r\n\r\n");
  const std::string book = answerTo("GET /page.html HTTP/1.1\r\n$BConnection: close\r\n\r\n");
  for (const char* header :
       {"default-src 'none'; script-src 'self';", "form-action 'none'; frame-ancestors 'none'",
        "Cross-Origin-Resource-Policy: same-origin", "Cache-Control: no-store"}) {
    EXPECT_THAT(view, HasSubstr(header));
  }
  for (const char* header : {"; sandbox allow-scripts allow-forms allow-downloads\r\n",
                             "Access-Control-Allow-Origin: null", "Cache-Control: no-cache",
                             "Connection-Allowlist: (response-origin)\r\n"}) {
    EXPECT_THAT(book, HasSubstr(header));
  }
  EXPECT_THAT(book, Not(HasSubstr(viewSecret)));
  EXPECT_THAT(book, Not(HasSubstr(" https:")));
  EXPECT_THAT(view, Not(HasSubstr("Access-Control")));

  start({}, true);
  const std::string open = answerTo("GET /page.html HTTP/1.1\r\n$BConnection: close\r\n\r\n");
  EXPECT_THAT(open, HasSubstr("img-src http://" + bookSecret));
  EXPECT_THAT(open, HasSubstr(" https: http: wss: ws: data: blob:"));
  EXPECT_THAT(open, HasSubstr("sandbox allow-scripts allow-forms allow-downloads\r\n"));
  EXPECT_THAT(open, Not(HasSubstr("Connection-Allowlist")));
}

TEST_F(Served, BoundsWhatAClientHolds) {
  start({.request = std::chrono::milliseconds(400), .bytesInMemory = 1'000'000});
  const Descriptor stuck = connected();
  send(stuck, "GET $vlong HTTP/1.1\r\n$V\r\n");
  // Bytes now and then do not prolong the time for a request.
  const Descriptor slow = connected();
  for (int i = 0; i < 20; ++i) {
    send(slow, i == 0 ? "GET $v HTTP/1.1\r\n$V" : "X: y\r\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(received(slow), "");
  // Neither does a request that was answered.
  const Descriptor idle = connected();
  send(idle, "GET $v HTTP/1.1\r\n$V\r\n");
  EXPECT_EQ(statusesIn(received(idle)), "200");
  // The first still holds more than all may; others are told to come back.
  const std::string busy = answerTo("GET $vlong HTTP/1.1\r\n$VConnection: close\r\n\r\n");
  EXPECT_EQ(statusesIn(busy), "503");
  EXPECT_THAT(busy, HasSubstr("Retry-After"));
  const auto before = std::chrono::steady_clock::now();
  EXPECT_LT(_server->lastRequest(), before);
  _server.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
}

TEST(Listener, TakesBothAddresses) {
  const auto first = Listener::open(0);
  ASSERT_TRUE(first);
  EXPECT_FALSE(Listener::open(first->port()));
}

}  // namespace
}  // namespace quorvex::view
