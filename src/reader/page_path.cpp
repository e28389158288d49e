#include "reader/page_path.h"

#include <algorithm>

#include <strings.h>

namespace quorvex::reader {

namespace {

bool endsLikePage(std::string_view path) {
  const auto endsWith = [&](std::string_view ending) {
    return path.size() > ending.size() && ::strncasecmp(path.data() + path.size() - ending.size(),
                                                        ending.data(), ending.size()) == 0;
  };
  return endsWith(".html") || endsWith(".htm");
}

PagePath splitAt(std::string_view document, std::size_t sign) {
  return {std::string(document.substr(0, sign)), std::string(document.substr(sign + 1))};
}

}  // namespace

PagePath splitPagePath(std::string_view document) {
  for (std::size_t sign = document.find('#'); sign != std::string_view::npos;
       sign = document.find('#', sign + 1)) {
    if (endsLikePage(document.substr(0, sign))) return splitAt(document, sign);
  }
  const std::size_t sign = document.rfind('#');
  if (sign == std::string_view::npos || endsLikePage(document)) return {std::string(document), {}};
  return splitAt(document, sign);
}

std::optional<std::string> pathBelow(std::string_view folder, std::string_view pagePath) {
  if (pagePath.find('\0') != std::string_view::npos) return std::nullopt;
  std::string joined(folder.empty() ? "." : folder);
  bool namesFile = false;
  for (std::string_view rest = pagePath; !rest.empty();) {
    const std::string_view component = rest.substr(0, rest.find('/'));
    rest.remove_prefix(std::min(component.size() + 1, rest.size()));
    if (component == "..") return std::nullopt;
    namesFile = !component.empty() && component != ".";
    if (namesFile) joined.append(joined.ends_with('/') ? "" : "/").append(component);
  }
  if (!namesFile || pagePath.ends_with('/')) return std::nullopt;
  return joined;
}

}  // namespace quorvex::reader
