#pragma once

#include <string>
#include <string_view>

#include "cli/options.h"
#include "common/output.h"
#include "common/value.h"

namespace quorvex {

// Listings print one aspect of an index file's top-level dictionary to standard output. Missing
// entries print as a missing object or not at all; only the output itself can fail.

/// Prints with the format's lister. IndexFormat::none has none.
Status listIndex(const Dictionary& index, ListMode mode, bool verbose, IndexFormat format);

/// Lists the full-text form.
void listFullTextIndex(TextOutput& output, const Dictionary& index, ListMode mode, bool verbose);

/// Lists the searchable-items form. Rejects unsupported modes on standard error.
void listSearchableItems(TextOutput& output, const Dictionary& index, ListMode mode, bool verbose);

/// Prints the semantic index's description, without a trailing line feed.
void printRDXSummary(TextOutput& output, const Dictionary& index);

/// Formats a value for a listing: "(null)" for a missing one.
std::string listedText(const Value* value);

/// Prints an anchor dictionary's names, sorted case-insensitively, one per line; an empty line when
/// there are none.
void printAnchorNames(TextOutput& output, const Dictionary& anchors);

/// Prints the title and description lines of a page.
void printTitleAndDescription(TextOutput& output, std::string_view title,
                              std::string_view description);

}  // namespace quorvex
