#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quorvex/help_index.h"

namespace quorvex {

/// Text as it may go to a terminal: one line, in which nothing moves the cursor.
std::string printable(std::string_view text);

/// A hit for a person, in three lines or two. `emphasised`: with the words that were looked for in
/// bold.
std::string hitAsText(const Hit& hit, std::size_t number, bool emphasised);

/// A hit as one line of JSON (RFC 8259) with its newline.
std::string hitAsJson(const Hit& hit, std::size_t number);

/// The path of a page as one line of JSON, with its newline.
std::string pathAsJson(const std::string& path);

}  // namespace quorvex
