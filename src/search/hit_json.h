#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "quorvex/help_index.h"

namespace quorvex {

/// Formats a hit as a JSON line (RFC 8259) with newline. `book`: the
/// title of its book, if several are searched; empty: not told.
std::string hitAsJson(const Hit& hit, std::size_t number, std::string_view book = {});

/// Formats what a search came to as a JSON line with newline, which follows those of the hits.
std::string resultAsJson(const SearchResult& result, std::span<const IndexContents> books);

/// Formats a page's path as a JSON line with newline. `hit`: as far as a path has it.
std::string pathAsJson(const Hit& hit, std::string_view book = {});

/// "answered", "noWords", "onlyStopWords" or "onlyExcluded".
std::string_view stateName(QueryState state);

}  // namespace quorvex
