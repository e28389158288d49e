#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quorvex/help_index.h"

namespace quorvex {

/// How hits are shown to people.
struct TextStyle {
  bool emphasised = false;  ///< the query's words are in bold
  std::size_t columns = 0;  ///< of the terminal; 0: lines are not wrapped
};

/// Makes text safe for a terminal: one line, in which nothing moves the cursor.
std::string printable(std::string_view text);

/// Formats a hit for people: its title, where it leads, and the words around the matches or else
/// the page's description. `book`: the title of its book, if several are searched.
std::string hitAsText(const Hit& hit, std::size_t number, const TextStyle& style,
                      std::string_view book = {});

/// Formats a defined name for people, as one line: the name and where it is defined.
std::string nameAsText(const Hit& hit, std::string_view book = {});

/// Formats a page's path as a line.
std::string pathAsText(const Hit& hit, std::string_view book = {});

/// The end of a URL that leads to a hit's best place: "#" and the fragment, encoded; or nothing.
std::string fragmentOf(const Hit& hit);

}  // namespace quorvex
