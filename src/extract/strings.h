#pragma once

#include <string_view>

namespace quorvex::QXStrings {

// Values of the robots meta tag, compared with its whole lower-cased content.
inline constexpr std::string_view robotsNoIndex = "noindex";
inline constexpr std::string_view robotsAnchors = "anchors";
inline constexpr std::string_view robotsKeywords = "keywords";
// Used by older books; they have no effect.
inline constexpr std::string_view robotsAnchorsNoIndex = "anchorsnoindex";
inline constexpr std::string_view robotsAnchorsOnly = "anchorsonly";
inline constexpr std::string_view robotsKeywordsOnly = "keywordsonly";
inline constexpr std::string_view robotsNoIndexOnly = "noindexonly";
inline constexpr std::string_view robotsNoRobots = "norobots";

// Field names of a document record.
inline constexpr std::string_view title = "title";
inline constexpr std::string_view identifier = "identifier";
inline constexpr std::string_view summary = "summary";
inline constexpr std::string_view keywords = "keywords";
inline constexpr std::string_view anchors = "anchors";
inline constexpr std::string_view xScriptLinks = "xScriptLinks";
inline constexpr std::string_view content = "content";

// Keys of the node dictionaries.
inline constexpr std::string_view nodeName = "nodeName";
inline constexpr std::string_view nodeText = "nodeText";
inline constexpr std::string_view attributeName = "attributeName";
inline constexpr std::string_view attributeText = "attributeText";
inline constexpr std::string_view nodeChildArray = "nodeChildArray";
inline constexpr std::string_view nodeAttributeArray = "nodeAttributeArray";

/// Content type of a help page as a searchable item.
inline constexpr std::string_view helpTopicContentType = "com.corvane.help.topic";

}  // namespace quorvex::QXStrings
