#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "common/value.h"
#include "extract/parsed_document.h"

namespace quorvex {

// Custom attributes of an item.
inline constexpr std::string_view itemHelpIdentifierKey = "_kQRItemHelpIdentifier";
inline constexpr std::string_view itemHelpTitleKey = "_kQRItemHelpTitle";
inline constexpr std::string_view itemHelpSummaryKey = "_kQRItemHelpSummary";
inline constexpr std::string_view itemHelpPathKey = "_kQRItemHelpPath";
inline constexpr std::string_view itemHelpTagsKey = "_kQRItemHelpTags";  ///< anchors, an array

// Entries of the index file.
inline constexpr std::string_view indexableItemsKey = "BC_INDEXABLE_ITEMS";
inline constexpr std::string_view indexableItemsVersionKey = "BC_INDEXABLE_ITEMS_VERSION";

/// The searchable-items form of an index file: one item for each document, in their order, and the
/// form's version. Null without documents. A document whose robots directives ask for anchors or
/// keywords only keeps its title and summary in custom attributes, where search does not look.
std::optional<Dictionary> createBeaconIndexDictionary(
    std::span<const std::shared_ptr<QXParsedDocument>> documents, bool generateSummaries);

}  // namespace quorvex
