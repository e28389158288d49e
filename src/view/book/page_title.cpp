#include "view/book/page_title.h"

#include <cstdint>

#include "common/files.h"
#include "extract/html_parser.h"
#include "extract/parse_document_operation.h"

namespace quorvex::view {

namespace {

constexpr std::uint64_t mostBytes = std::uint64_t{1} << 20U;

}  // namespace

std::string titleOfPage(const Descriptor& file) {
  const Result<Data> bytes = readOpenFile(file.get(), mostBytes);
  if (!bytes) return {};
  std::string title;
  QXHTMLParser::withPage(*bytes, "", [&](QXHTMLParser::Page& page) {
    const auto titles = page.nodes(PageQuery::titleElement);
    if (!titles.empty()) title = titles.front().text().value_or("");
  });
  return compressString(title);
}

}  // namespace quorvex::view
