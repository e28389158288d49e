#pragma once

#include <memory>
#include <optional>
#include <span>

#include "common/value.h"
#include "extract/parsed_document.h"

namespace quorvex {

/// The searchable-items form of an index file: one item for each document, in their order, and the
/// form's version. Null without documents. A document whose robots directives ask for anchors or
/// keywords only keeps its title and summary in custom attributes, where search does not look.
std::optional<Dictionary> createBeaconIndexDictionary(
    std::span<const std::shared_ptr<QXParsedDocument>> documents, bool generateSummaries);

}  // namespace quorvex
