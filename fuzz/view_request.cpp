// Passes a request to the site of a book: method and target in the first line, then the host, then
// headers. Nothing outside the book may be sent, and each answer belongs to one origin.

#include <algorithm>
#include <filesystem>
#include <optional>

#include <unistd.h>

#include "fuzz/driver.h"
#include "tests/support/temporary_folder.h"
#include "view/book/book_site.h"
#include "view/site.h"

using namespace quorvex;

namespace {

constexpr std::string_view secretText = "OUTSIDE";

/// A book with secrets around it, and links to them.
class Library {
 public:
  Library() {
    for (const char* path : {"secret.txt", "closed/secret.html", "book/.git/secret.txt"})
      _folder.write(path, secretText);
    _folder.write("book/index.html", "<p>page");
    _folder.write("book/a/b.txt", "abcdefghij");
    std::filesystem::permissions(_folder.path() / "closed", std::filesystem::perms(0700));
    std::filesystem::permissions(_folder.path() / "secret.txt", std::filesystem::perms(0600));
    std::filesystem::create_symlink("../secret.txt", _folder.path() / "book/out.txt");
    std::filesystem::create_symlink("../closed", _folder.path() / "book/closed");
    const view::BookSite book(
        *view::BookFolder::open((_folder.path() / "book").string()),
        [](std::string_view bytes, const auto&) { return std::string(bytes); });
    _site.emplace(
        view::Origins{80, std::string(32, '1'), std::string(32, '2'), false},
        [](const view::Request&) { return view::Response(); },
        [book](const view::Request& request) { return book.answer(request); });
  }
  const view::Site& site() const { return *_site; }

 private:
  test::TemporaryFolder _folder;
  std::optional<view::Site> _site;
};

std::string takeUpTo(std::string_view& text, char sign) {
  std::string piece(text.substr(0, text.find(sign)));
  text.remove_prefix(std::min(piece.size() + 1, text.size()));
  return piece;
}

std::string bytesOf(const view::Response& response) {
  if (const auto* bytes = std::get_if<std::string>(&response.body)) return *bytes;
  const auto& body = std::get<view::FileBody>(response.body);
  std::string bytes(body.size, '\0');
  const ssize_t count =
      ::pread(body.file->get(), bytes.data(), bytes.size(), static_cast<off_t>(body.offset));
  fuzz::require(count == static_cast<ssize_t>(bytes.size()));
  return bytes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Library library;
  std::string_view rest = fuzz::view(bytes, size);
  view::Request request;
  request.method = takeUpTo(rest, ' ');
  request.query = takeUpTo(rest, '\n');
  std::string_view target = request.query;
  request.path = takeUpTo(target, '?');
  if (!request.path.starts_with('/')) return 0;
  request.query = std::string(target);
  request.host = takeUpTo(rest, '\n');
  while (!rest.empty()) {
    std::string name = takeUpTo(rest, ':');
    request.headers.emplace(std::move(name), takeUpTo(rest, '\n'));
  }

  const view::Response response = library.site().answer(request);
  const auto count = [&](std::string_view name) {
    return std::ranges::count(response.headers, name, &std::pair<std::string, std::string>::first);
  };
  fuzz::require(count("Content-Security-Policy") == 1 && count("Cache-Control") == 1);
  fuzz::require(response.status != 200 || request.method == "GET" || request.method == "HEAD");
  fuzz::require(bytesOf(response).find(secretText) == std::string::npos);
  return 0;
}
