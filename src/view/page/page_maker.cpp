#include "view/page/page_maker.h"

#include <memory>
#include <optional>

#include "view/assets/asset_reply.h"
#include "view/page/marked_page.h"

namespace quorvex::view {

namespace {

constexpr std::string_view ownFiles = "/~quorvex/";

}  // namespace

PageMaker pageMaker(IndexKeeper& keeper) {
  return [&keeper](std::string_view bytes, const std::string& question) {
    const std::optional<HelpIndex> index = question.empty() ? std::nullopt : keeper.index();
    if (!index) return pageForReading(bytes, nullptr);
    return pageForReading(bytes, [&](std::string_view text) {
      const auto matches = index->match(question, text);
      return matches ? *matches : std::vector<TextRange>();
    });
  };
}

bool isOwnFile(const Request& request) {
  return request.path.starts_with(ownFiles);
}

Response ownFile(const Request& request) {
  const std::string_view name = std::string_view(request.path).substr(ownFiles.size());
  // The interface's own files are none of a page's business.
  return assetReply(name == "page.js" || name == "page.css" ? name : std::string_view(), request);
}

}  // namespace quorvex::view
