#include "view/book/page_links.h"

#include <cstdint>
#include <string>

#include "common/files.h"

namespace quorvex::view {

namespace {

/// Of a page; larger ones are not read for a click.
constexpr std::uint64_t mostBytes = std::uint64_t{64} << 20U;
constexpr std::size_t longestAddress = 4096;

std::string withEscapedAmpersands(std::string_view address) {
  std::string escaped;
  for (const char c : address)
    escaped.append(c == '&' ? "&amp;" : std::string_view(&c, 1));
  return escaped;
}

/// Whether a text stands in the page as a whole value.
bool isValueIn(std::string_view page, std::string_view text) {
  constexpr std::string_view before = "\"'= \t\r\n";
  constexpr std::string_view behind = "\"'> \t\r\n";
  for (std::size_t at = page.find(text); at != page.npos; at = page.find(text, at + 1)) {
    const std::size_t end = at + text.size();
    const bool begins = at > 0 && before.find(page[at - 1]) != before.npos;
    if (begins && end < page.size() && behind.find(page[end]) != behind.npos) return true;
  }
  return false;
}

}  // namespace

bool holdsLink(const Descriptor& file, std::string_view address) {
  if (address.empty() || address.size() > longestAddress) return false;
  const Result<Data> bytes = readOpenFile(file.get(), mostBytes);
  if (!bytes) return false;
  const std::string_view page = bytes->bytes();
  const auto isThere = [&](std::string_view text) {
    return isValueIn(page, text) || isValueIn(page, withEscapedAmpersands(text));
  };
  // Browsers put a slash behind a host's name.
  return isThere(address) ||
         (address.ends_with('/') && isThere(address.substr(0, address.size() - 1)));
}

}  // namespace quorvex::view
