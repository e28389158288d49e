#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"
#include "quorvex/help_index.h"

namespace quorvex {

/// The validated command line of quorvex-search.
struct SearchArguments {
  bool help = false;
  bool version = false;
  bool json = false;
  bool clearCache = false;
  SearchOptions options;
  std::optional<std::string> anchor;
  std::optional<std::string> related;
  std::optional<std::string> names;
  std::vector<std::string> books;    ///< none, or one for each index
  std::optional<std::size_t> open;   ///< the hit to open, from 1
  std::vector<std::string> indexes;  ///< at least one, unless the cache is to be cleared
  std::string query;
};

/// An option and its effect.
struct SearchOption {
  std::string_view name;
  std::string_view shortName;  ///< empty for none
  enum class Takes { nothing, value, optionalValue } takes;
  std::string_view summary;  ///< short and human-readable
  /// False when the value is invalid.
  bool (*apply)(SearchArguments& arguments, std::string_view value);
};

/// All option lists are generated from this table.
std::span<const SearchOption> searchOptions();

inline constexpr std::size_t mostHits = 100'000;

Result<SearchArguments> parseSearchArguments(std::span<char* const> arguments);

}  // namespace quorvex
