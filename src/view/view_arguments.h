#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/result.h"

namespace quorvex::view {

/// The validated command line of quorvex-view.
struct ViewArguments {
  bool help = false;
  bool version = false;
  bool opensBrowser = true;
  bool keep = false;  ///< does not end by itself
  bool allowNetwork = false;
  std::uint16_t port = 0;                ///< 0: the one of last time, or any
  std::string folder;                    ///< of the book's pages
  std::optional<std::string> indexFile;  ///< the operand, if --book gives the folder
};

/// An option and its effect.
struct ViewOption {
  std::string_view name;
  std::string_view shortName;  ///< empty for none
  bool takesValue;
  std::string_view summary;  ///< short and human-readable
  /// False when the value is invalid.
  bool (*apply)(ViewArguments& arguments, std::string_view value);
};

/// All option lists are generated from this table.
std::span<const ViewOption> viewOptions();

Result<ViewArguments> parseViewArguments(std::span<char* const> arguments);

}  // namespace quorvex::view
