#pragma once

#include <span>
#include <string_view>

namespace quorvex::view {

/// A file of the interface, held in the program.
struct Asset {
  std::string_view name;   ///< "app.js"
  std::string_view type;   ///< for Content-Type
  std::string_view bytes;  ///< without comments and indentation
  std::string_view etag;   ///< for ETag, with its quotation marks
};

std::span<const Asset> assets();

/// Null if there is none.
const Asset* assetNamed(std::string_view name);

}  // namespace quorvex::view
