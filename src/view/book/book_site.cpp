#include "view/book/book_site.h"

#include <array>
#include <optional>

#include "common/checksum.h"
#include "common/files.h"
#include "common/hexadecimal.h"
#include "common/url.h"
#include "extract/page_limits.h"
#include "view/book/byte_ranges.h"
#include "view/book/conditional.h"
#include "view/book/file_types.h"
#include "view/http/target.h"

namespace quorvex::view {

namespace {

Response notFound() {
  return {404,
          {{"Content-Type", "text/html; charset=utf-8"}},
          "<!DOCTYPE html>\n<html lang=\"en\"><meta charset=\"utf-8\"><title>Not found</title>\n"
          "<h1>Not found</h1>\n<p>The book has no such page.</p>\n"};
}

std::uint64_t sizeOf(const BookFolder::Found& found) {
  return static_cast<std::uint64_t>(found.information.st_size);
}

Version versionOf(const BookFolder::Found& found) {
  const struct stat& file = found.information;
  const std::string tag = '"' + hexadecimal(file.st_ino) + '-' + hexadecimal(sizeOf(found)) + '-' +
                          hexadecimal(static_cast<std::uint64_t>(file.st_mtim.tv_sec)) + '.' +
                          hexadecimal(static_cast<std::uint64_t>(file.st_mtim.tv_nsec)) + '"';
  return {tag, file.st_mtim.tv_sec};
}

/// The headers by which a copy can be kept and asked about again.
Response withVersion(const Version& version) {
  Response response;
  response.headers = {{"Cache-Control", "no-cache"}, {"ETag", version.tag}};
  if (version.modified) {
    response.headers.emplace_back("Last-Modified", httpDate(*version.modified));
  }
  return response;
}

/// With the slash, what the folder's page links to is found in the folder.
Response redirectToFolder(const Request& request, const std::string& path) {
  const std::string name(lastPathComponent(path));
  // The dot keeps a colon in the name from making it an address of its own.
  std::string location = "./" + percentEncodePath(name) + '/';
  if (!request.query.empty()) location += '?' + request.query;
  return {301, {{"Location", location}, {"Cache-Control", "no-cache"}}, ""};
}

std::string questionOf(const Request& request) {
  const auto parameters = parametersOf(request.query);
  const auto found = parameters.find("quorvex-question");
  return found == parameters.end() ? std::string() : found->second;
}

unsigned statusFor(Precondition outcome) {
  switch (outcome) {
    case Precondition::failed:
      return 412;
    case Precondition::notModified:
      return 304;
    case Precondition::met:
      break;
  }
  return 200;
}

void cutOut(const ByteRange& range, FileBody& body, Response& response) {
  const std::string all = '/' + std::to_string(body.size);
  if (range.kind == ByteRange::Kind::unsatisfiable) {
    response.status = 416;
    response.headers.emplace_back("Content-Range", "bytes *" + all);
  } else if (range.kind == ByteRange::Kind::part) {
    response.status = 206;
    const std::uint64_t last = range.offset + range.size - 1;
    response.headers.emplace_back("Content-Range", "bytes " + std::to_string(range.offset) + '-' +
                                                       std::to_string(last) + all);
    body.offset = range.offset;
    body.size = range.size;
  }
}

}  // namespace

BookSite::BookSite(std::shared_ptr<const BookFolder> folder, PageMaker pageMaker)
    : _folder(std::move(folder)), _pageMaker(std::move(pageMaker)) {}

Response BookSite::answer(const Request& request) const {
  const std::optional<std::string> decoded = decodedPath(request.path);
  const BookFolder::Shown shown = decoded ? _folder->shownAt(*decoded) : BookFolder::Shown();
  if (shown.found.kind == BookFolder::Kind::folder) return redirectToFolder(request, shown.path);
  return answerWithFile(request, shown.path, shown.found);
}

Response BookSite::answerWithFile(const Request& request, const std::string& path,
                                  const BookFolder::Found& found) const {
  if (found.kind != BookFolder::Kind::file) return notFound();
  if (isHtml(path) && sizeOf(found) <= maximumPageSize) return answerWithPage(request, found);
  const Version version = versionOf(found);
  Response response = withVersion(version);
  FileBody body{found.file, 0, sizeOf(found)};
  response.status = statusFor(precondition(request, version));
  if (response.status == 304) response.body = body;
  if (response.status != 200) return response;
  const std::string_view type = mediaType(path);
  response.headers.emplace_back("Content-Type", type.empty() ? "application/octet-stream" : type);
  if (type.empty()) response.headers.emplace_back("Content-Disposition", "attachment");
  response.headers.emplace_back("Accept-Ranges", "bytes");
  const std::string* range = headerOf(request, "range");
  if (range != nullptr && request.method == "GET" && mayBeRange(request, version)) {
    cutOut(requestedRange(*range, body.size), body, response);
  }
  if (response.status != 416) response.body = std::move(body);
  return response;
}

Response BookSite::answerWithPage(const Request& request, const BookFolder::Found& found) const {
  const Result<Data> bytes = readOpenFile(found.file->get(), maximumPageSize);
  if (!bytes) return notFound();
  std::string page = _pageMaker(bytes->bytes(), questionOf(request));
  // What is made of a file may change without it: with the index, and with this program.
  const Version version{'"' + hexadecimal(checksum(page)) + '"', std::nullopt};
  Response response = withVersion(version);
  response.status = statusFor(precondition(request, version));
  if (response.status == 412) return response;
  response.headers.emplace_back("Content-Type", "text/html; charset=utf-8");
  response.body = std::move(page);
  return response;
}

}  // namespace quorvex::view
