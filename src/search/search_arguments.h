#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/result.h"
#include "quorvex/help_index.h"

namespace quorvex {

/// The command line of quorvex-search, checked.
struct SearchArguments {
  bool help = false;
  bool json = false;
  SearchOptions options;
  std::optional<std::string> anchor;
  std::optional<std::string> related;
  std::string index;
  std::string query;
};

/// One option and what it does.
struct SearchOption {
  std::string_view name;
  std::string_view shortName;  ///< empty for none
  bool takesValue;
  std::string_view summary;  ///< a few words for a person
  /// False when the value is wrong.
  bool (*apply)(SearchArguments& arguments, std::string_view value);
};

/// Everything that lists the options is made from this table.
std::span<const SearchOption> searchOptions();

inline constexpr std::size_t mostHits = 100'000;

Result<SearchArguments> parseSearchArguments(std::span<char* const> arguments);

}  // namespace quorvex
