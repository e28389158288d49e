#include "extract/page_queries.h"

#include <algorithm>
#include <string>

#include "extract/read_attributes.h"

namespace quorvex {

namespace {

constexpr std::array<std::string_view, pageQueryCount> expressions = {
    "//body/@id",
    "//meta[translate(@name,'ROBOTS','robots')='robots']/@content",
    "//meta[translate(@name,'KEYWORDS','keywords')='keywords']/@content",
    "//a/@id | //a/@name",
    "//title",
    "//meta[translate(@name,'DESCRIPTION','description')='description']/@content",
    "//body//text()[not(parent::a[contains(@href,'x-help-script:') or contains(@href,'help:') or "
    "contains(@href,'x-corvane-helpbasic:') or contains(@href,'x-help-action')])]",
    "//a[contains(@href,'x-help-script:') or contains(@href,'help:') or "
    "contains(@href,'x-corvane-helpbasic:') or contains(@href,'x-help-action')]",
};

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

/// In XPath a plain name matches no node in a namespace. Most names differ in the first byte, which
/// saves measuring them, and a call for each of several names of every element.
template <typename Node>
[[gnu::always_inline]] inline bool isNamed(const Node* node, std::string_view name) {
  return node->name != nullptr && *node->name == static_cast<unsigned char>(name.front()) &&
         node->ns == nullptr && view(node->name) == name;
}

/// The same for "pre", without calls: it is asked twice for every element.
bool isListing(const xmlNode* element) {
  const xmlChar* name = element->name;
  return name != nullptr && name[0] == 'p' && name[1] == 'r' && name[2] == 'e' && name[3] == '\0';
}

/// Returns the attribute's value, empty when there is none. `buffer` receives it when the tree
/// stores it in pieces.
std::string_view attributeValue(const xmlNode* element, std::string_view name,
                                std::string& buffer) {
  const xmlAttr* attribute = element->properties;
  while (attribute != nullptr && !isNamed(attribute, name))
    attribute = attribute->next;
  const xmlNode* child = attribute == nullptr ? nullptr : attribute->children;
  if (child == nullptr) return {};
  if (child->next == nullptr && child->type == XML_TEXT_NODE) return view(child->content);
  xmlChar* joined = xmlNodeListGetString(attribute->doc, child, 1);
  buffer = view(joined);
  xmlFree(joined);
  return buffer;
}

/// Like XPath's translate() from upper to lower case.
bool equalsIgnoringCase(std::string_view text, std::string_view lowered) {
  return std::ranges::equal(text, lowered, [](char a, char b) {
    return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
  });
}

/// Walks the tree in document order, without recursion.
class Walk {
 public:
  Walk() {
    answer(PageQuery::titleElement);
    answer(PageQuery::helpLinks);
  }

  PageContent over(const xmlDoc* document) {
    const xmlNode* node = document->children;
    while (node != nullptr) {
      if (node->type == XML_ELEMENT_NODE) {
        enter(node);
        if (node->children != nullptr) {
          node = node->children;
          continue;
        }
        leave(node);
      } else if (_openBodies > 0 &&
                 (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)) {
        addText(node);
      }
      while (node->next == nullptr) {
        node = node->parent;
        if (node == nullptr || node->type != XML_ELEMENT_NODE) return content(document);
        leave(node);
      }
      node = node->next;
    }
    return content(document);
  }

 private:
  struct Anchor {
    bool isLink;
    bool isHelpLink;
  };

  PageContent content(const xmlDoc* document) {
    _traits.language = statedLanguage(document);
    return {std::move(_answers), _places.take(), std::move(_traits)};
  }

  /// Like the engine, creates no node set before the last step of the expression is reached.
  std::vector<NodeView>& answer(PageQuery query) {
    NodeSet& nodes = _answers[static_cast<std::size_t>(query)];
    return nodes ? *nodes : nodes.emplace();
  }

  void enter(const xmlNode* element) {
    if (_openBodies > 0) _places.enter(element, answer(PageQuery::bodyText).size());
    if (isNamed(element, "a")) {
      enterAnchor(element);
    } else if (isNamed(element, "body")) {
      enterBody(element);
    } else if (isNamed(element, "meta")) {
      enterMeta(element);
    } else if (isListing(element)) {
      ++_openListings;
    } else if (isNamed(element, "title")) {
      answer(PageQuery::titleElement).emplace_back(element);
    }
  }

  void leave(const xmlNode* element) {
    if (_openBodies > 0) _places.leave(element, answer(PageQuery::bodyText).size());
    if (isNamed(element, "body")) --_openBodies;
    if (isListing(element)) --_openListings;
    if (isNamed(element, "a")) {
      if (_openAnchors.back().isLink) --_openLinks;
      _openAnchors.pop_back();
    }
  }

  void addText(const xmlNode* text) {
    if (isInHelpLink(text)) return;
    answer(PageQuery::bodyText).emplace_back(text);
    _traits.add(text, _places.isInFurniture(), _openLinks > 0, _openListings > 0);
  }

  void enterAnchor(const xmlNode* element) {
    selectAttributes(element, PageQuery::anchorNames, {"id", "name"});
    std::string buffer;
    const std::string_view target = attributeValue(element, "href", buffer);
    const Anchor anchor = {.isLink = !target.empty(), .isHelpLink = isHelpLink(target)};
    if (anchor.isHelpLink) answer(PageQuery::helpLinks).emplace_back(element);
    if (anchor.isLink) ++_openLinks;
    _openAnchors.push_back(anchor);
  }

  void enterBody(const xmlNode* element) {
    ++_openBodies;
    answer(PageQuery::bodyText);
    selectAttributes(element, PageQuery::bodyIdentifier, {"id"});
  }

  void enterMeta(const xmlNode* element) {
    std::string buffer;
    const std::string_view name = attributeValue(element, "name", buffer);
    for (const auto& [wanted, query] : {std::pair("robots", PageQuery::robotsMeta),
                                        {"keywords", PageQuery::keywordsMeta},
                                        {"description", PageQuery::descriptionMeta}}) {
      if (equalsIgnoringCase(name, wanted)) selectAttributes(element, query, {"content"});
    }
  }

  bool isInHelpLink(const xmlNode* text) const {
    return isNamed(text->parent, "a") && _openAnchors.back().isHelpLink;
  }

  void selectAttributes(const xmlNode* element, PageQuery query,
                        std::initializer_list<std::string_view> names) {
    std::vector<NodeView>& nodes = answer(query);
    for (const xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
      const auto isWanted = [attribute](std::string_view name) { return isNamed(attribute, name); };
      if (std::ranges::any_of(names, isWanted)) {
        nodes.emplace_back(reinterpret_cast<const xmlNode*>(attribute));
      }
    }
  }

  PageAnswers _answers;
  PlaceMarks _places;
  unsigned _openBodies = 0;
  unsigned _openListings = 0;
  unsigned _openLinks = 0;  ///< open anchors that are links
  /// Asking each text's parent would take quadratic time.
  std::vector<Anchor> _openAnchors;
  PageTraits _traits;
};

}  // namespace

std::string_view expressionOf(PageQuery query) {
  return expressions[static_cast<std::size_t>(query)];
}

PageContent answerPageQueries(const xmlDoc* document) {
  return Walk().over(document);
}

}  // namespace quorvex
