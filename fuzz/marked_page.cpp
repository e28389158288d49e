// Makes the page that a reader gets of an HTML file: what was put in are tags around text, and
// without them it is the file again.

#include "view/page/marked_page.h"

#include "common/unicode.h"
#include "fuzz/driver.h"
#include "view/page/html_tokens.h"
#include "view/page/page_encoding.h"

using namespace quorvex;
using fuzz::require;
using view::HtmlToken;

namespace {

/// Many stretches, whatever they hold; some overlap, some lie behind the end.
std::vector<TextRange> manyRanges(std::string_view text) {
  std::vector<TextRange> ranges;
  for (std::size_t at = 0; at < text.size(); at += 1 + at % 5)
    ranges.push_back({at, at + 1 + at % 7});
  return ranges;
}

std::string withoutMarks(const std::string& sent) {
  std::string page;
  view::HtmlTokens tokens(sent);
  const auto next = [&]() {
    const HtmlToken token = tokens.next();
    return std::pair(token.kind,
                     std::string_view(sent).substr(token.begin, token.end - token.begin));
  };
  for (auto token = next(); token.first != HtmlToken::Kind::end; token = next()) {
    if (token.second == view::markBegin) {
      const auto text = next();
      require(text.first == HtmlToken::Kind::text);
      require(next().second == view::markEnd);
      page += text.second;
    } else {
      page += token.second;
    }
  }
  return page;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view file = fuzz::view(bytes, size);
  std::string converted;
  const std::string_view page = view::utf8Page(file, converted);
  require(isValidUtf8(page));
  if (page.find("quorvex") != std::string_view::npos) return 0;
  std::string sent = withoutMarks(view::pageForReading(file, manyRanges));
  const std::size_t tags = sent.find(view::pageTags);
  require(tags != std::string::npos);
  require(sent.erase(tags, view::pageTags.size()) == page);
  return 0;
}
