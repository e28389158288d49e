#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quorvex/help_index.h"

namespace quorvex {

/// Makes text safe for a terminal: one line, in which nothing moves the cursor.
std::string printable(std::string_view text);

/// Formats a hit for people, as two or three lines. `emphasised`: the query's words are in bold.
std::string hitAsText(const Hit& hit, std::size_t number, bool emphasised);

/// Formats a hit as a JSON line (RFC 8259) with newline.
std::string hitAsJson(const Hit& hit, std::size_t number);

/// Formats a page's path as a JSON line with newline.
std::string pathAsJson(const std::string& path);

}  // namespace quorvex
