#include "view/assets/asset_reply.h"

#include <optional>
#include <string>

#include "view/assets/assets.h"
#include "view/book/conditional.h"

namespace quorvex::view {

Response assetReply(std::string_view name, const Request& request) {
  const Asset* asset = assetNamed(name);
  if (asset == nullptr) {
    return {404, {{"Content-Type", "text/plain; charset=utf-8"}}, "There is no such file.\n"};
  }
  const Version version{std::string(asset->etag), std::nullopt};
  const bool isKnown = precondition(request, version) == Precondition::notModified;
  return {isKnown ? 304U : 200U,
          {{"Content-Type", std::string(asset->type)},
           {"ETag", std::string(asset->etag)},
           {"Cache-Control", "no-cache"}},
          std::string(asset->bytes)};
}

}  // namespace quorvex::view
