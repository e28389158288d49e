#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

namespace quorvex {

/// The part of XPath 1.0 that one walk over a page's tree can answer:
///
///     selector  = path *( "|" path )
///     path      = "//" name [ "[" or "]" ] [ "/@" name | "//text()" [ "[" or "]" ] ]
///     or        = term *( "or" term )
///     term      = "not(" or ")"
///               | "contains(@" name "," literal ")"
///               | "translate(@" name "," literal "," literal ")" "=" literal
///               | "parent::" name [ "[" or "]" ]
///
/// White space may stand between the parts. A selector gives the nodes that libxml2's own engine
/// gives for the expression, in the same order, at a fraction of the cost, or no node set where
/// that gives none. Immutable.
class NodeSelector {
 public:
  /// Null for an expression outside that part.
  static std::optional<NodeSelector> compile(std::string_view expression);

  struct Condition {
    enum class Kind { anyOf, negation, attributeContains, attributeTranslates, parentIs };
    Kind kind = Kind::anyOf;
    std::string name;                   ///< of the attribute or the parent
    std::vector<std::string> literals;  ///< one of them to be contained, the one to be equalled
    std::array<std::int16_t, 128>
        map{};                     ///< translate(): what each ASCII byte becomes, -1: nothing
    std::vector<Condition> parts;  ///< anyOf: at least one; negation: one; parentIs: one or none
  };

  enum class Target { element, attribute, text };

  struct Path {
    std::string element;
    std::vector<Condition> elementCondition;  ///< one or none
    Target target = Target::element;
    std::string attribute;
    std::vector<Condition> textCondition;  ///< one or none
  };

  const std::vector<Path>& paths() const { return _paths; }

 private:
  std::vector<Path> _paths;
};

/// Answers several selectors in one walk. Immutable; safe from several threads, each on a document
/// of its own.
class NodeSelectorSet {
 public:
  explicit NodeSelectorSet(std::vector<std::optional<NodeSelector>> selectors);
  NodeSelectorSet(const NodeSelectorSet&) = delete;
  NodeSelectorSet& operator=(const NodeSelectorSet&) = delete;

  bool answers(std::size_t selector) const { return _selectors[selector].has_value(); }

  using NodeSet = std::optional<std::vector<xmlNode*>>;

  /// For each selector the nodes it selects, in document order, each once. Null for a null one, and
  /// as in libxml2 where no path got as far as its last step.
  std::vector<NodeSet> select(xmlDoc* document) const;

 private:
  class Walk;
  struct Entry {
    std::size_t selector;
    const NodeSelector::Path* path;  ///< in _selectors
  };

  std::vector<std::optional<NodeSelector>> _selectors;
  std::vector<Entry> _entries;
  std::array<bool, 256> _firstBytes{};  ///< of the element names that matter
};

}  // namespace quorvex
