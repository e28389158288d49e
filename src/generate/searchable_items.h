#pragma once

#include <memory>
#include <optional>
#include <span>

#include "common/value.h"
#include "extract/parsed_document.h"

namespace quorvex {

/// Creates the searchable-items form of an index file: one item per document, in order, and the
/// form's version. Null without documents. A document whose robots directives request only anchors
/// or keywords keeps its title and summary in custom attributes, which search ignores.
std::optional<Dictionary> createBeaconIndexDictionary(
    std::span<const std::shared_ptr<QXParsedDocument>> documents, bool generateSummaries);

}  // namespace quorvex
