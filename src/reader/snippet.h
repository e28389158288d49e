#pragma once

#include <cstddef>
#include <string>

#include "platform/textsift.h"
#include "reader/page_text.h"

namespace quorvex::reader {

/// Cuts the stretch of a page's text around some words: whole words in about 160 characters, from
/// and to the border of a block or a sentence where one is near, on one line. An ellipsis stands
/// where the stretch begins or ends in a sentence.
std::string snippetOf(const PageText& page, const TSLocatedWords& located);

}  // namespace quorvex::reader
