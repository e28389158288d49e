#pragma once

#include <optional>
#include <span>
#include <string>

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

inline constexpr std::size_t mostHits = 100'000;

Result<SearchArguments> parseSearchArguments(std::span<char* const> arguments);

}  // namespace quorvex
