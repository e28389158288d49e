#include "reader/page_text.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>

#include "common/memory_shortage.h"
#include "extract/parse_document_operation.h"

namespace quorvex::reader {

namespace {

constexpr std::uint64_t formatOfTexts = 2;

/// `part`: of a page, to which no description and no keywords belong.
PageText textOf(const Data& html, bool isPart) {
  IndexSettings settings;
  settings.forQuotation = true;
  QXParseDocumentOperation operation(html, std::string(), formatOfTexts, settings);
  // The operation counts a lack of memory and goes on.
  const std::size_t shortages = memoryShortages();
  operation.main();
  if (memoryShortages() != shortages) throw std::bad_alloc();
  QXParsedDocument& document = *operation.primaryDocument();
  PageText page;
  page.blocks = std::move(document.paragraphStarts());
  if (isPart) {
    page.text = std::move(document.content());
    return page;
  }
  page.text = document.fullText();
  for (std::size_t& block : page.blocks)
    block += document.contentOffset();
  page.bodyBegin = document.contentOffset();
  page.blocks.insert(page.blocks.begin(), page.bodyBegin);
  return page;
}

bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Returns the value of an attribute in a page's head, or of a declaration inside one.
std::string_view valueBehind(std::string_view text, std::string_view name) {
  std::size_t at = text.find(name);
  if (at == text.npos) return {};
  at = text.find_first_not_of(" \t\r\n\"'=", at + name.size());
  if (at == text.npos) return {};
  const std::size_t end = text.find_first_of("\"'> \t\r\n;", at);
  return text.substr(at, end - at);
}

/// Finds the tag with an id, or a name, of this value. The tag need not be well-formed.
std::optional<std::size_t> tagWithFragment(std::string_view html, std::string_view fragment) {
  for (std::size_t at = html.find(fragment); at != html.npos; at = html.find(fragment, at + 1)) {
    const std::size_t end = at + fragment.size();
    const bool ends = end == html.size() || html[end] == '"' || html[end] == '\'' ||
                      html[end] == '>' || isBlank(html[end]);
    std::size_t begin = at;
    if (begin > 0 && (html[begin - 1] == '"' || html[begin - 1] == '\'')) --begin;
    while (begin > 0 && isBlank(html[begin - 1]))
      --begin;
    if (!ends || begin == 0 || html[--begin] != '=') continue;
    while (begin > 0 && isBlank(html[begin - 1]))
      --begin;
    const std::string_view before = html.substr(0, begin);
    const auto isAttribute = [&](std::string_view name) {
      return before.size() > name.size() && before.ends_with(name) &&
             isBlank(before[before.size() - name.size() - 1]);
    };
    if (!isAttribute("id") && !isAttribute("name") && !isAttribute("ID") && !isAttribute("NAME")) {
      continue;
    }
    const std::size_t tag = before.rfind('<');
    if (tag != before.npos) return tag;
  }
  return std::nullopt;
}

/// As generators write it in an attribute.
std::string escaped(std::string_view fragment) {
  std::string text;
  for (const char c : fragment) {
    if (c == '&') {
      text += "&amp;";
    } else if (c == '<') {
      text += "&lt;";
    } else if (c == '>') {
      text += "&gt;";
    } else if (c == '"') {
      text += "&quot;";
    } else {
      text += c;
    }
  }
  return text;
}

/// Without a word or a tag that has been cut in the middle.
std::string_view cutBehindTag(std::string_view html) {
  const std::size_t tag = html.rfind('>');
  return tag == html.npos ? html : html.substr(0, tag + 1);
}

}  // namespace

PageText textOfPage(const Data& html) {
  return textOf(html, false);
}

PageText beginningOfPage(const Data& html, std::size_t size) {
  return textOf(Data(std::string(cutBehindTag(html.bytes().substr(0, size)))), false);
}

PageText textFromFragment(const Data& html, std::string_view fragment, std::size_t size) {
  if (fragment.empty()) return {};
  // Where an encoding is declared.
  constexpr std::size_t headSize = 1024;
  std::optional<std::size_t> tag = tagWithFragment(html.bytes(), fragment);
  if (!tag) tag = tagWithFragment(html.bytes(), escaped(fragment));
  if (!tag) return {};
  std::string part = "<html><head>";
  const std::string_view encoding = valueBehind(html.bytes().substr(0, headSize), "charset");
  if (!encoding.empty()) part.append("<meta charset=\"").append(encoding).append("\">");
  part += "</head><body>";
  part += cutBehindTag(html.bytes().substr(*tag, size));
  return textOf(Data(std::move(part)), true);
}

}  // namespace quorvex::reader
