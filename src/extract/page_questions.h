#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include "extract/node_view.h"

namespace quorvex {

/// What every page is asked, in this order.
enum class PageQuestion : std::uint8_t {
  bodyIdentifier,
  robotsMeta,
  keywordsMeta,
  anchorNames,
  titleElement,
  descriptionMeta,
  bodyText,
  helpLinks,
};
inline constexpr std::size_t pageQuestionCount = 8;

/// The question as an XPath 1.0 expression.
std::string_view expressionOf(PageQuestion question);

/// Nodes in document order, each once; null where XPath gives no node set.
using NodeSet = std::optional<std::vector<NodeView>>;
using PageAnswers = std::array<NodeSet, pageQuestionCount>;

/// Answers all questions in one walk over the page. The nodes are those that libxml2's XPath engine
/// selects by the expressions, in the same order, at a fraction of the cost.
PageAnswers answerPageQuestions(const xmlDoc* document);

}  // namespace quorvex
