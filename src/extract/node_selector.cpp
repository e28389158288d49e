#include "extract/node_selector.h"

#include <algorithm>

namespace quorvex {

namespace {

using Condition = NodeSelector::Condition;
using Path = NodeSelector::Path;

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<signed char>(c) >= 0; });
}

bool isNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isNameCharacter(char c) {
  return isNameStart(c) || (c >= '0' && c <= '9') || c == '-';
}

/// Recursive descent over the grammar in the header. Every function gives false, and the whole
/// expression is refused, at the first thing that the grammar does not have.
class Compiler {
 public:
  explicit Compiler(std::string_view expression) : _rest(expression) {}

  bool selector(std::vector<Path>& paths) {
    do {
      if (!path(paths.emplace_back())) return false;
    } while (take("|"));
    skipSpace();
    return _rest.empty();
  }

 private:
  static constexpr int deepestNesting = 16;

  void skipSpace() {
    _rest.remove_prefix(std::min(_rest.find_first_not_of(" \t\r\n"), _rest.size()));
  }

  bool take(std::string_view token) {
    skipSpace();
    if (!_rest.starts_with(token)) return false;
    _rest.remove_prefix(token.size());
    return true;
  }

  bool name(std::string& out) {
    skipSpace();
    if (_rest.empty() || !isNameStart(_rest.front())) return false;
    const auto end = std::ranges::find_if_not(_rest, isNameCharacter);
    out.assign(_rest.begin(), end);
    _rest.remove_prefix(out.size());
    // A colon or a parenthesis would make the name an axis, a prefix or a function.
    return !_rest.starts_with(':') && !_rest.starts_with('(');
  }

  bool literal(std::string& out) {
    skipSpace();
    if (_rest.empty() || (_rest.front() != '\'' && _rest.front() != '"')) return false;
    const std::size_t end = _rest.find(_rest.front(), 1);
    if (end == std::string_view::npos) return false;
    out = _rest.substr(1, end - 1);
    _rest.remove_prefix(end + 1);
    return true;
  }

  bool optionalPredicate(std::vector<Condition>& conditions) {
    if (!take("[")) return true;
    return any(conditions.emplace_back()) && take("]");
  }

  bool path(Path& out) {
    if (!take("//") || !name(out.element) || !optionalPredicate(out.elementCondition)) return false;
    if (take("//")) {
      out.target = NodeSelector::Target::text;
      return take("text") && take("(") && take(")") && optionalPredicate(out.textCondition);
    }
    if (take("/")) {
      out.target = NodeSelector::Target::attribute;
      return take("@") && name(out.attribute);
    }
    return true;
  }

  bool any(Condition& out) {
    if (++_nesting > deepestNesting) return false;
    do {
      Condition part;
      if (!term(part)) return false;
      if (!out.parts.empty() && askTheSame(out.parts.back(), part)) {
        out.parts.back().literals.push_back(std::move(part.literals.front()));
      } else {
        out.parts.push_back(std::move(part));
      }
    } while (takeWord("or"));
    --_nesting;
    return true;
  }

  /// Two alternatives that look into one attribute need to find it only once.
  static bool askTheSame(const Condition& a, const Condition& b) {
    return a.kind == Condition::Kind::attributeContains && b.kind == a.kind && a.name == b.name;
  }

  bool takeWord(std::string_view word) {
    skipSpace();
    if (!_rest.starts_with(word)) return false;
    if (_rest.size() > word.size() && isNameCharacter(_rest[word.size()])) return false;
    _rest.remove_prefix(word.size());
    return true;
  }

  bool term(Condition& out) {
    if (takeWord("not")) {
      out.kind = Condition::Kind::negation;
      return take("(") && any(out.parts.emplace_back()) && take(")");
    }
    if (takeWord("contains")) {
      out.kind = Condition::Kind::attributeContains;
      return take("(") && take("@") && name(out.name) && take(",") &&
             literal(out.literals.emplace_back()) && take(")");
    }
    if (takeWord("translate")) return translation(out);
    if (takeWord("parent")) {
      out.kind = Condition::Kind::parentIs;
      return take("::") && name(out.name) && optionalPredicate(out.parts);
    }
    return false;
  }

  bool translation(Condition& out) {
    out.kind = Condition::Kind::attributeTranslates;
    std::string from;
    std::string to;
    if (!(take("(") && take("@") && name(out.name) && take(",") && literal(from) && take(",") &&
          literal(to) && take(")") && take("=") && literal(out.literals.emplace_back()))) {
      return false;
    }
    if (!isAscii(from) || !isAscii(to)) return false;
    for (std::size_t i = 0; i < out.map.size(); ++i)
      out.map[i] = static_cast<std::int16_t>(i);
    // The first place of a repeated character counts, so it is written last.
    for (std::size_t i = from.size(); i-- > 0;) {
      const auto byte = static_cast<unsigned char>(from[i]);
      out.map[byte] = -1;
      if (i < to.size()) out.map[byte] = static_cast<unsigned char>(to[i]);
    }
    return true;
  }

  std::string_view _rest;
  int _nesting = 0;
};

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

/// Most names differ in their first byte already, and are not measured then.
bool equals(const xmlChar* own, std::string_view name) {
  return own != nullptr && *own == static_cast<unsigned char>(name.front()) && view(own) == name;
}

bool isNamed(const xmlNode* node, std::string_view name) {
  return equals(node->name, name) && node->ns == nullptr;
}

/// The attribute's value; `buffer` holds it when the tree keeps it in pieces.
std::string_view attributeValue(const xmlAttr* attribute, std::string& buffer) {
  const xmlNode* child = attribute->children;
  if (child == nullptr) return {};
  if (child->next == nullptr && child->type == XML_TEXT_NODE) return view(child->content);
  xmlChar* joined = xmlNodeListGetString(attribute->doc, attribute->children, 1);
  buffer = view(joined);
  xmlFree(joined);
  return buffer;
}

/// The value of the attribute of that name, empty when there is none.
std::string_view valueOf(const xmlNode* node, std::string_view name, std::string& buffer) {
  if (node->type != XML_ELEMENT_NODE) return {};
  for (const xmlAttr* attribute = node->properties; attribute != nullptr;
       attribute = attribute->next) {
    if (equals(attribute->name, name) && attribute->ns == nullptr) {
      return attributeValue(attribute, buffer);
    }
  }
  return {};
}

bool contains(std::string_view value, const Condition& condition) {
  return std::ranges::any_of(condition.literals, [value](const std::string& literal) {
    return value.find(literal) != std::string_view::npos;
  });
}

bool translatesTo(std::string_view value, const Condition& condition) {
  const std::string& literal = condition.literals.front();
  std::size_t matched = 0;
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    const int mapped = byte < 128 ? condition.map[byte] : byte;
    if (mapped < 0) continue;
    if (matched == literal.size() || static_cast<unsigned char>(literal[matched]) != mapped) {
      return false;
    }
    ++matched;
  }
  return matched == literal.size();
}

bool holds(const Condition& condition, const xmlNode* node) {
  const auto partHolds = [node](const Condition& part) { return holds(part, node); };
  std::string buffer;
  switch (condition.kind) {
    case Condition::Kind::anyOf:
      return std::ranges::any_of(condition.parts, partHolds);
    case Condition::Kind::negation:
      return !holds(condition.parts.front(), node);
    case Condition::Kind::attributeContains:
      return contains(valueOf(node, condition.name, buffer), condition);
    case Condition::Kind::attributeTranslates:
      return translatesTo(valueOf(node, condition.name, buffer), condition);
    case Condition::Kind::parentIs: {
      const xmlNode* parent = node->parent;
      return parent != nullptr && parent->type == XML_ELEMENT_NODE &&
             isNamed(parent, condition.name) &&
             (condition.parts.empty() || holds(condition.parts.front(), parent));
    }
  }
  return false;
}

bool allHold(const std::vector<Condition>& conditions, const xmlNode* node) {
  return conditions.empty() || holds(conditions.front(), node);
}

}  // namespace

std::optional<NodeSelector> NodeSelector::compile(std::string_view expression) {
  NodeSelector selector;
  if (!Compiler(expression).selector(selector._paths)) return std::nullopt;
  return selector;
}

NodeSelectorSet::NodeSelectorSet(std::vector<std::optional<NodeSelector>> selectors)
    : _selectors(std::move(selectors)) {
  for (std::size_t i = 0; i < _selectors.size(); ++i) {
    if (!_selectors[i]) continue;
    for (const Path& path : _selectors[i]->paths()) {
      _entries.push_back({i, &path});
      _firstBytes[static_cast<unsigned char>(path.element.front())] = true;
    }
  }
}

/// One walk in document order, without the call stack.
class NodeSelectorSet::Walk {
 public:
  explicit Walk(const NodeSelectorSet& set) : _set(set), _results(set._selectors.size()) {
    for (const Entry& entry : set._entries) {
      if (entry.path->target == NodeSelector::Target::element) reachLastStep(entry);
    }
  }

  std::vector<NodeSet> over(xmlDoc* document) {
    auto* const root = reinterpret_cast<xmlNode*>(document);
    xmlNode* node = document->children;
    while (node != nullptr) {
      if (node->type == XML_ELEMENT_NODE) {
        enter(node);
        if (node->children != nullptr) {
          node = node->children;
          continue;
        }
        leave(node);
      } else if (!_scopes.empty() &&
                 (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)) {
        visitText(node);
      }
      while (node->next == nullptr) {
        node = node->parent;
        if (node == nullptr || node == root) return std::move(_results);
        leave(node);
      }
      node = node->next;
    }
    return std::move(_results);
  }

 private:
  /// An open element whose text a path selects.
  struct Scope {
    const xmlNode* element;
    const Entry* entry;
  };

  void enter(xmlNode* element) {
    if (element->name == nullptr || !_set._firstBytes[*element->name]) return;
    for (const Entry& entry : _set._entries) {
      const Path& path = *entry.path;
      if (!isNamed(element, path.element) || !allHold(path.elementCondition, element)) continue;
      reachLastStep(entry);
      switch (path.target) {
        case NodeSelector::Target::element:
          append(entry.selector, element);
          break;
        case NodeSelector::Target::text:
          _scopes.push_back({element, &entry});
          break;
        case NodeSelector::Target::attribute:
          _attributeEntries.push_back(&entry);
          break;
      }
    }
    if (!_attributeEntries.empty()) selectAttributes(element);
  }

  /// Attribute by attribute, so that a union of paths keeps their order in the element.
  void selectAttributes(xmlNode* element) {
    for (xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
      if (attribute->ns != nullptr) continue;
      for (const Entry* entry : _attributeEntries) {
        if (equals(attribute->name, entry->path->attribute)) {
          append(entry->selector, reinterpret_cast<xmlNode*>(attribute));
        }
      }
    }
    _attributeEntries.clear();
  }

  void leave(const xmlNode* element) {
    while (!_scopes.empty() && _scopes.back().element == element)
      _scopes.pop_back();
  }

  void visitText(xmlNode* text) {
    for (const Scope& scope : _scopes) {
      if (allHold(scope.entry->path->textCondition, text)) append(scope.entry->selector, text);
    }
  }

  void reachLastStep(const Entry& entry) {
    if (!_results[entry.selector]) _results[entry.selector].emplace();
  }

  /// Several paths or scopes of one selector reach a node one after the other.
  void append(std::size_t selector, xmlNode* node) {
    std::vector<xmlNode*>& nodes = *_results[selector];
    if (nodes.empty() || nodes.back() != node) nodes.push_back(node);
  }

  const NodeSelectorSet& _set;
  std::vector<NodeSet> _results;
  std::vector<Scope> _scopes;
  std::vector<const Entry*> _attributeEntries;  ///< of the element that is being entered
};

std::vector<NodeSelectorSet::NodeSet> NodeSelectorSet::select(xmlDoc* document) const {
  return Walk(*this).over(document);
}

}  // namespace quorvex
