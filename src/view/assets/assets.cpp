#include "view/assets/assets.h"

#include <algorithm>

namespace quorvex::view {

const Asset* assetNamed(std::string_view name) {
  const std::span<const Asset> all = assets();
  const auto found = std::ranges::find(all, name, &Asset::name);
  return found == all.end() ? nullptr : &*found;
}

}  // namespace quorvex::view
