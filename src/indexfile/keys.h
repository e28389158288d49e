#pragma once

#include <string_view>

// Keys of an index file and of its searchable items, shared by writers and readers.
// docs/formats/index-file.md describes their values.

namespace quorvex {

// Entries of the file.
inline constexpr std::string_view semanticIndexKey = "RDXIndexData";
inline constexpr std::string_view fullTextIndexKey = "TSI_INDEX_DATA";
inline constexpr std::string_view anchorTableKey = "TSI_ANCHOR_DATA";
inline constexpr std::string_view useRemoteRootKey = "TSI_USE_REMOTE_ROOT";
inline constexpr std::string_view remoteRootKey = "TSI_REMOTE_ROOT";
inline constexpr std::string_view preferNetworkFilesKey = "TSI_PREFER_NETWORK_FILES";
inline constexpr std::string_view versionsRecordKey = "TSI_VERSIONS";
inline constexpr std::string_view indexableItemsKey = "BC_INDEXABLE_ITEMS";
inline constexpr std::string_view indexableItemsVersionKey = "BC_INDEXABLE_ITEMS_VERSION";

// Custom attributes of an item.
inline constexpr std::string_view itemHelpIdentifierKey = "_kQRItemHelpIdentifier";
inline constexpr std::string_view itemHelpTitleKey = "_kQRItemHelpTitle";
inline constexpr std::string_view itemHelpSummaryKey = "_kQRItemHelpSummary";
inline constexpr std::string_view itemHelpPathKey = "_kQRItemHelpPath";
inline constexpr std::string_view itemHelpTagsKey = "_kQRItemHelpTags";  ///< anchors, an array

}  // namespace quorvex
