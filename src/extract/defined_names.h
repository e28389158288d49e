#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/textsift.h"

namespace quorvex {

// What a page's terms, headings and titles define, told from their text and from the fragments that
// lead to them. Generators derive the fragment from the name ("method.to_str", "GUC-WAL-DEBUG",
// "index-fzero-1"), so the name is the part of the text with which the fragment ends.

/// Whether a fragment is a number that its generator counted up ("L23", "id-1.6.7", "index-45").
bool isNumbered(std::string_view fragment);

/// The part of the text that a fragment is made from; empty if there is none.
std::string_view nameOfFragment(std::string_view text, std::string_view fragment);

struct Definition {
  std::string_view fragment;  ///< the one made for the text, else the first that is not numbered
  std::vector<TSName> names;
};

/// `fragments`: all that lead to the term or heading, the closest first.
Definition definitionOfTerm(std::string_view text, std::span<const std::string_view> fragments);
Definition definitionOfHeading(std::string_view text, std::span<const std::string_view> fragments);

}  // namespace quorvex
