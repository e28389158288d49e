#include "reader/page_path.h"

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

}  // namespace quorvex::reader
