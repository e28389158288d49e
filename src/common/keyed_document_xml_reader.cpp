#include "common/keyed_document_xml_reader.h"

#include <array>
#include <charconv>
#include <climits>
#include <optional>
#include <utility>
#include <vector>

#include <libxml/hash.h>
#include <libxml/parser.h>

#include "common/base64.h"
#include "common/nesting.h"
#include "common/quiet_xml_errors.h"
#include "common/unicode.h"

namespace quorvex {

namespace {

/// Chunk size for libxml2.
constexpr std::size_t pieceSize = std::size_t{64} * 1024;
/// The longest tag, comment or declaration. libxml2 compares every attribute of a tag with every
/// other, so a tag of several megabytes would take minutes.
constexpr std::size_t maximumMarkup = std::size_t{64} * 1024;

enum class Element { root, dict, array, key, string, data, integer, real, yes, no };

struct ElementName {
  std::string_view name;
  Element element;
};
constexpr std::array<ElementName, 9> elementNames = {{{"dict", Element::dict},
                                                      {"array", Element::array},
                                                      {"key", Element::key},
                                                      {"string", Element::string},
                                                      {"data", Element::data},
                                                      {"integer", Element::integer},
                                                      {"real", Element::real},
                                                      {"true", Element::yes},
                                                      {"false", Element::no}}};

std::string_view view(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

template <typename Number>
std::optional<Value> parseNumber(std::string_view text) {
  text = trimWhitespaceAndNewlines(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return Value(number);
}

}  // namespace

/// Builds the tree from the parser's events.
class KeyedDocumentXmlReader::Builder {
 public:
  Builder();
  ~Builder();
  Builder(const Builder&) = delete;
  Builder& operator=(const Builder&) = delete;

  bool parse(std::string_view piece, bool last);
  Result<Value> result();

 private:
  /// An open element. Only containers have entries or elements; the root's single value is an
  /// element.
  struct Open {
    Element element;
    Array elements;
    Dictionary entries;
    std::optional<std::string> key;
  };

  static Builder& self(void* context) { return *static_cast<Builder*>(context); }
  static void onStart(void* context, const xmlChar* name, const xmlChar* prefix,
                      const xmlChar* /*uri*/, int /*namespaceCount*/,
                      const xmlChar** /*namespaces*/, int /*attributeCount*/, int /*defaulted*/,
                      const xmlChar** /*attributes*/) {
    self(context).start(view(name), prefix != nullptr);
  }
  static void onEnd(void* context, const xmlChar* /*name*/, const xmlChar* /*prefix*/,
                    const xmlChar* /*uri*/) {
    self(context).end();
  }
  static void onCharacters(void* context, const xmlChar* text, int size) {
    self(context).text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
  }
  static void onComment(void* context, const xmlChar* /*text*/) { self(context)._sinceEvent = 0; }
  static void onInstruction(void* context, const xmlChar* /*target*/, const xmlChar* /*data*/) {
    self(context)._sinceEvent = 0;
  }
  static void onReference(void* context, const xmlChar* name) {
    self(context).refuse("Entity references are not allowed: " + std::string(view(name)));
  }
  static void onError(void* context, XmlErrorPointer error);

  bool feed(std::string_view bytes, bool last);
  void refuse(std::string reason);
  void start(std::string_view name, bool prefixed);
  void end();
  void text(std::string_view text);
  bool mayOpen(Element element, std::string_view name);
  std::optional<Value> closedValue(Open& closed);

  xmlParserCtxtPtr _context;
  std::vector<Open> _open;
  std::string _text;            ///< of the open leaf
  Base64Decoder _data;          ///< of the open data element
  std::size_t _sinceEvent = 0;  ///< bytes parsed since the last event
  std::string _held;            ///< of a CDATA section, not yet parsed
  std::size_t _section = 0;     ///< of a CDATA section, size parsed so far
  std::optional<Value> _value;
  Status _status = okStatus();
};

KeyedDocumentXmlReader::Builder::Builder() {
  xmlSAXHandler handlers{};
  handlers.initialized = XML_SAX2_MAGIC;
  handlers.startElementNs = onStart;
  handlers.endElementNs = onEnd;
  handlers.characters = onCharacters;
  handlers.ignorableWhitespace =
      onCharacters;  // the same, or libxml2 looks ahead to tell them apart
  handlers.cdataBlock = onCharacters;
  handlers.comment = onComment;
  handlers.processingInstruction = onInstruction;
  handlers.reference = onReference;
  handlers.serror = onError;
  _context = xmlCreatePushParserCtxt(&handlers, this, nullptr, 0, nullptr);
  if (_context == nullptr) {
    _status = Error{"Out of memory"};
    return;
  }
  // "Huge" lifts the limit on text length. No handler looks up entities, so none are expanded, and
  // no handler resolves them, so nothing is loaded.
  xmlCtxtUseOptions(_context, XML_PARSE_HUGE | XML_PARSE_NONET);
}

KeyedDocumentXmlReader::Builder::~Builder() {
  if (_context == nullptr) return;
  xmlFreeDoc(_context->myDoc);  // holds a DOCTYPE's declarations
  _context->myDoc = nullptr;
  xmlFreeParserCtxt(_context);
}

bool KeyedDocumentXmlReader::Builder::parse(std::string_view piece, bool last) {
  if (!_status) return false;
  // A CDATA section may be as long as any text, and libxml2 rescans all of it for its end with each
  // piece, so the pieces must grow with it.
  if (_context->instate == XML_PARSER_CDATA_SECTION) {
    _sinceEvent = 0;
    _held += piece;
    if (_held.size() < _section && !last) return true;
    const std::string held = std::exchange(_held, {});
    _section += held.size();
    return feed(held, last);
  }
  _section = piece.size();
  if (_sinceEvent > maximumMarkup) {
    refuse("A tag, comment or declaration is too long");
    return false;
  }
  _sinceEvent += piece.size();
  return feed(piece, last);
}

bool KeyedDocumentXmlReader::Builder::feed(std::string_view bytes, bool last) {
  do {
    const std::string_view piece = bytes.substr(0, INT_MAX);
    bytes.remove_prefix(piece.size());
    xmlParseChunk(_context, piece.data(), static_cast<int>(piece.size()),
                  last && bytes.empty() ? 1 : 0);
  } while (!bytes.empty());
  return _status.ok();
}

Result<Value> KeyedDocumentXmlReader::Builder::result() {
  if (!_status) return _status.error();
  if (_context->wellFormed == 0 || !_value) return Error{"Not a keyed document"};
  return *std::move(_value);
}

void KeyedDocumentXmlReader::Builder::onError(void* context, XmlErrorPointer error) {
  // With a DOCTYPE, a reference to an undeclared entity is only a warning, and in an attribute
  // nothing else would report it.
  if (error->level < XML_ERR_ERROR && error->code != XML_WAR_UNDECLARED_ENTITY) return;
  std::string_view message = error->message != nullptr ? error->message : "Not well-formed";
  self(context).refuse(std::string(trimWhitespaceAndNewlines(message)));
}

void KeyedDocumentXmlReader::Builder::refuse(std::string reason) {
  if (!_status) return;
  const int line = _context->input != nullptr ? _context->input->line : 0;
  _status = Error{"Line " + std::to_string(line) + ": " + std::move(reason)};
  xmlStopParser(_context);
}

bool KeyedDocumentXmlReader::Builder::mayOpen(Element element, std::string_view name) {
  const Open& parent = _open.back();
  const bool isKey = element == Element::key;
  bool fits = false;
  switch (parent.element) {
    case Element::root:
      fits = !isKey && parent.elements.empty();
      break;
    case Element::array:
      fits = !isKey;
      break;
    case Element::dict:
      fits = isKey != parent.key.has_value();
      break;
    default:
      break;
  }
  if (!fits) {
    refuse("<" + std::string(name) + "> is not allowed here");
  } else if ((element == Element::dict || element == Element::array) &&
             _open.size() > maximumNesting) {
    refuse("Nested too deeply");
    fits = false;
  }
  return fits;
}

void KeyedDocumentXmlReader::Builder::start(std::string_view name, bool prefixed) {
  if (!_status) return;
  _sinceEvent = 0;
  if (_open.empty()) {
    // Otherwise libxml2 would apply the DOCTYPE's attribute defaults to every element.
    xmlHashFree(_context->attsDefault, xmlHashDefaultDeallocator);
    _context->attsDefault = nullptr;
    _open.push_back({Element::root, {}, {}, {}});
    return;
  }
  for (const ElementName& known : elementNames) {
    if (known.name != name || prefixed) continue;
    if (!mayOpen(known.element, name)) return;
    _text.clear();
    _open.push_back({known.element, {}, {}, {}});
    return;
  }
  refuse("<" + std::string(name) + "> is not an element of a keyed document");
}

void KeyedDocumentXmlReader::Builder::text(std::string_view text) {
  if (!_status || _open.empty()) return;
  _sinceEvent = 0;
  switch (_open.back().element) {
    case Element::key:
    case Element::string:
    case Element::integer:
    case Element::real:
      _text += text;
      return;
    case Element::data:
      if (!_data.append(text)) refuse("Not base64");
      return;
    default:
      if (text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
        refuse("Text is not allowed here");
      }
  }
}

std::optional<Value> KeyedDocumentXmlReader::Builder::closedValue(Open& closed) {
  switch (closed.element) {
    case Element::dict:
      if (closed.key) return std::nullopt;
      return Value(std::move(closed.entries));
    case Element::array:
      return Value(std::move(closed.elements));
    case Element::string:
      return Value(std::move(_text));
    case Element::data:
      if (!_data.complete()) return std::nullopt;
      return Value(Data(_data.take()));
    case Element::integer:
      return parseNumber<std::int64_t>(_text);
    case Element::real:
      return parseNumber<double>(_text);
    case Element::yes:
      return Value(true);
    case Element::no:
      return Value(false);
    default:
      return std::nullopt;
  }
}

void KeyedDocumentXmlReader::Builder::end() {
  if (!_status) return;
  _sinceEvent = 0;
  Open closed = std::move(_open.back());
  _open.pop_back();
  if (closed.element == Element::root) {
    if (closed.elements.empty()) return refuse("The document contains no value");
    _value = std::move(closed.elements.front());
    return;
  }
  Open& parent = _open.back();
  if (closed.element == Element::key) {
    if (parent.entries.contains(_text)) return refuse("Duplicate key: " + _text);
    parent.key = std::move(_text);
    return;
  }
  std::optional<Value> value = closedValue(closed);
  if (!value) return refuse("An element's value is invalid or incomplete");
  if (parent.element == Element::dict) {
    parent.entries.emplace_hint(parent.entries.end(), *std::move(parent.key), *std::move(value));
    parent.key.reset();
  } else {
    parent.elements.push_back(*std::move(value));
  }
}

KeyedDocumentXmlReader::KeyedDocumentXmlReader() {
  xmlInitParser();
  _builder = std::make_unique<Builder>();
}

KeyedDocumentXmlReader::~KeyedDocumentXmlReader() = default;

bool KeyedDocumentXmlReader::append(std::string_view bytes) {
  const QuietXmlErrors quiet;
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, pieceSize);
    bytes.remove_prefix(piece.size());
    if (!_builder->parse(piece, false)) return false;
  }
  return true;
}

Result<Value> KeyedDocumentXmlReader::finish() {
  const QuietXmlErrors quiet;
  _builder->parse({}, true);
  return _builder->result();
}

}  // namespace quorvex
