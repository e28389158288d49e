#pragma once

#include <string>
#include <string_view>

#include "cli/options.h"
#include "common/output.h"
#include "common/value.h"

namespace quorvex {

// Listings print one aspect of an index file's top-level dictionary to standard output. What is
// missing prints as a missing object or not at all; only the output itself can fail.

/// Prints with the lister of the format. There is none for IndexFormat::none.
Status listIndex(const Dictionary& index, ListMode mode, bool verbose, IndexFormat format);

/// The full-text form.
void listFullTextIndex(TextOutput& output, const Dictionary& index, ListMode mode, bool verbose);

/// The searchable-items form. A mode that it does not have is refused on standard error.
void listSearchableItems(TextOutput& output, const Dictionary& index, ListMode mode, bool verbose);

/// The description of the semantic index, without a line feed behind it.
void printRDXSummary(TextOutput& output, const Dictionary& index);

/// A value as a listing prints it: "(null)" for a missing one.
std::string listedText(const Value* value);

/// The names of an anchor dictionary, sorted without regard to case, a line each; one empty line
/// when there is none.
void printAnchorNames(TextOutput& output, const Dictionary& anchors);

/// The title and description lines of one page.
void printTitleAndDescription(TextOutput& output, std::string_view title,
                              std::string_view description);

}  // namespace quorvex
