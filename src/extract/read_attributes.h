#pragma once

#include <string_view>

#include <libxml/tree.h>

namespace quorvex {

/// Whether the queries, the place marks or the traits of a page read an attribute of an element. Of
/// a link for the help system, the first attribute is read too, whichever it is.
bool isReadAttribute(const xmlChar* element, const xmlChar* attribute);

/// Whether a link is one for the help system.
bool isHelpLink(std::string_view target);

}  // namespace quorvex
