#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include "extract/node_view.h"
#include "extract/page_traits.h"
#include "extract/place_marks.h"

namespace quorvex {

/// The queries run on every page, in order.
enum class PageQuery : std::uint8_t {
  bodyIdentifier,
  robotsMeta,
  keywordsMeta,
  anchorNames,
  titleElement,
  descriptionMeta,
  bodyText,
  helpLinks,
};
inline constexpr std::size_t pageQueryCount = 8;

/// Returns the XPath 1.0 expression.
std::string_view expressionOf(PageQuery query);

/// Unique nodes in document order; null where XPath returns no node set.
using NodeSet = std::optional<std::vector<NodeView>>;
using PageAnswers = std::array<NodeSet, pageQueryCount>;

struct PageContent {
  PageAnswers answers;
  std::vector<PlaceMark> placeMarks;
  PageTraits traits;
};

/// Answers all queries, marks the places and measures the texts in one walk over the page. Selects
/// the same nodes in the same order as libxml2's XPath engine, at a fraction of the cost.
PageContent answerPageQueries(const xmlDoc* document);

}  // namespace quorvex
