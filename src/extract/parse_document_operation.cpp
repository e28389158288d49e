#include "extract/parse_document_operation.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "common/log.h"
#include "common/memory_shortage.h"
#include "common/release_memory.h"
#include "common/unicode.h"
#include "extract/strings.h"

namespace quorvex {

namespace {

/// The format that indexes every page in full.
constexpr std::uint64_t searchableItemsFormat = 4;

void logNodeValue(std::string_view value, PageQuery query) {
  QXLog(3, "%@ returns: %@", expressionOf(query), value);
}

/// The node's text in lower case.
std::optional<std::string> loweredText(const NodeView& node) {
  const std::optional<std::string> text = node.text();
  return text ? std::optional(lowercased(*text)) : std::nullopt;
}

/// Adds the starts of paragraphs that follow blank lines in preformatted text.
void addBlankLines(const NodeView& node, std::string_view text, std::size_t offset,
                   std::vector<std::size_t>& starts) {
  bool isPreformatted = false;
  for (std::size_t line = text.find('\n'); line != text.npos; line = text.find('\n', line + 1)) {
    const std::size_t next = text.find_first_not_of(" \t\r", line + 1);
    if (next == text.npos || text[next] != '\n') continue;
    isPreformatted = isPreformatted || node.isPreformatted();
    if (!isPreformatted) return;
    starts.push_back(offset + next);
    line = text.find_first_not_of(" \t\r\n", next);
    if (line == text.npos) return;
  }
}

/// Returns where the first space stands that follows another one, else the end. Words are short: a
/// search for each single space would cost more than this loop.
std::size_t firstRepeatedSpace(std::string_view text) {
  const auto isRepeated = [](char before, char c) { return before == ' ' && c == ' '; };
  const auto* const found = std::ranges::adjacent_find(text, isRepeated);
  return found == text.end() ? text.size() : static_cast<std::size_t>(found - text.begin()) + 1;
}

}  // namespace

std::string compressString(std::string_view text, std::span<std::size_t> first,
                           std::span<std::size_t> second) {
  const char* const begin = text.data();
  text = trimWhitespaceAndNewlines(text);
  std::string compressed;
  compressed.reserve(text.size());
  while (!text.empty()) {
    const auto offset = static_cast<std::size_t>(text.data() - begin);
    const std::size_t behindSpace = firstRepeatedSpace(text);
    for (std::span<std::size_t>* const positions : {&first, &second}) {
      for (; !positions->empty() && positions->front() < offset + behindSpace;
           *positions = positions->subspan(1))
        positions->front() = compressed.size() + std::max(positions->front(), offset) - offset;
    }
    compressed += text.substr(0, behindSpace);
    text.remove_prefix(behindSpace);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  for (const std::span<std::size_t> positions : {first, second})
    std::ranges::fill(positions, compressed.size());
  return compressed;
}

QXParseDocumentOperation::QXParseDocumentOperation(Data data, std::string relativePath,
                                                   std::uint64_t format,
                                                   const IndexSettings& settings)
    : _relativePath(std::move(relativePath)),
      _primaryDocument(std::make_shared<QXParsedDocument>(_relativePath)),
      _data(std::move(data)),
      _indexType(format),
      _settings(settings) {}

void QXParseDocumentOperation::main() noexcept {
  try {
    _parseHTML();
  } catch (const std::exception& exception) {
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr) ++memoryShortages();
    QXLog(0, "Exception caught in QXParseDocumentOperation: %@", exception.what());
  }
  if (manager != nullptr) manager->completed(*this);
}

void QXParseDocumentOperation::_parseHTML() {
  // Unlike Data(), {nullptr, ""} allocates nothing.
  QXHTMLParser::withPage(std::exchange(_data, {nullptr, ""}), _relativePath, [this](Page& page) {
    _setDocumentMetaProperties(page);
    _setDocumentIndexibleProperties(page);
  });
  _data = {nullptr, ""};  // unlike Data(), allocates nothing
  _setDocumentIdentifiers();
  _verifyAndLog();
  const QXParsedDocument& document = *_primaryDocument;
  if (!document.dontIndex() || document.anchorsOnly()) {
    _documents.push_back(_primaryDocument);
    if (_settings.generateSummaries) document.summaryGeneratedIfNecessary();
    if (logs(3)) QXLog(3, "%@", document.description());
    // No further summary will be made.
    if (!_settings.forQuotation) releaseMemory(_primaryDocument->paragraphStarts());
  }
  QXLog(2, "%@ -- Finished parsing html", _relativePath);
  if (manager == nullptr) return;
  for (const std::shared_ptr<QXParsedDocument>& each : _documents)
    manager->parsed(*each);
}

void QXParseDocumentOperation::_setDocumentMetaProperties(Page& page) {
  if (_indexType == searchableItemsFormat) _indexEntireDocument = true;
  QXParsedDocument& document = *_primaryDocument;
  for (const NodeView& node : page.nodes(PageQuery::bodyIdentifier))
    document.setIdentifier(loweredText(node));
  const std::span<const NodeView> robotsTags = page.nodes(PageQuery::robotsMeta);
  for (const NodeView& node : robotsTags) {
    const std::optional<std::string> directive = loweredText(node);
    if (directive == QXStrings::robotsNoIndex) document.setDontIndex(true);
    if (directive == QXStrings::robotsAnchors) document.setAnchorsOnly(true);
    if (directive == QXStrings::robotsKeywords) document.setKeywordsOnly(true);
  }
  // Any robots tag, whatever it says, excludes the body text.
  if (robotsTags.empty()) _indexEntireDocument = true;
}

void QXParseDocumentOperation::_setDocumentIndexibleProperties(Page& page) {
  QXParsedDocument& document = *_primaryDocument;
  _addToString(document.keywords(), page, PageQuery::keywordsMeta);
  if (_indexEntireDocument || document.anchorsOnly()) {
    _addToAnchors(document.anchors(), page, PageQuery::anchorNames);
  }
  _addToString(document.title(), page, PageQuery::titleElement);
  _addToString(document.summary(), page, PageQuery::descriptionMeta);
  if (_indexEntireDocument) _addContent(page);
  _addToLinks(document.xScriptLinks(), page, PageQuery::helpLinks);
}

void QXParseDocumentOperation::_addToString(std::string& target, Page& page, PageQuery query) {
  std::string collected;
  for (const NodeView& node : page.nodes(query)) {
    if (node.appendText(collected)) collected += ' ';
  }
  if (collected.empty()) return;
  target += compressString(collected);
  logNodeValue(collected, query);
}

void QXParseDocumentOperation::_addContent(Page& page) {
  QXParsedDocument& document = *_primaryDocument;
  std::string collected;
  const std::span<const NodeView> nodes = page.nodes(PageQuery::bodyText);
  document.places() = page.places(document.title());
  std::vector<std::uint32_t>& offsets = document.places().offsets;
  std::vector<std::size_t> places;
  places.reserve(offsets.size());
  std::vector<std::size_t>& starts = document.paragraphStarts();
  // The description in the log includes the summary.
  const bool needsStarts = _settings.forQuotation ||
                           (document.summary().empty() && (_settings.generateSummaries || logs(3)));
  std::optional<NodeView> previous;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const NodeView& node = nodes[i];
    const std::size_t begin = collected.size();
    while (places.size() < offsets.size() && offsets[places.size()] <= i)
      places.push_back(begin);
    if (_settings.forQuotation && node.isPermalink()) continue;
    if (!node.appendText(collected)) continue;
    if (needsStarts) {
      const std::string_view text = std::string_view(collected).substr(begin);
      if (!trimWhitespaceAndNewlines(text).empty()) {
        const bool begins =
            previous && (_settings.forQuotation ? node.beginsLineAfter(*previous)
                                                : node.beginsParagraphAfter(*previous));
        if (begins) starts.push_back(begin);
        previous = node;
      }
      addBlankLines(node, text, begin, starts);
    }
    collected += _settings.forQuotation ? textJoint : ' ';
  }
  places.resize(offsets.size(), collected.size());
  if (!collected.empty()) document.content() = compressString(collected, starts, places);
  document.traits() = page.traits(document.content());
  offsets.assign(places.begin(), places.end());
  if (collected.empty()) return;
  logNodeValue(collected, PageQuery::bodyText);
}

void QXParseDocumentOperation::_addToAnchors(OrderedStringSet& target, Page& page,
                                             PageQuery query) {
  std::string name;
  for (const NodeView& node : page.nodes(query)) {
    name.clear();
    if (!node.appendText(name)) continue;
    target.add(name);
    logNodeValue(name, query);
  }
}

void QXParseDocumentOperation::_addToLinks(std::vector<ScriptLink>& target, Page& page,
                                           PageQuery query) {
  for (const NodeView& node : page.nodes(query)) {
    std::optional<std::string> name = node.text();
    if (!name) continue;
    // The first attribute counts as the link, whichever it is.
    std::optional<std::string> link = node.firstAttributeText();
    if (!link) throw std::invalid_argument("The first attribute of a help link has no value");
    target.push_back({{"Link", *std::move(link)}, {"Name", *std::move(name)}});
  }
}

void QXParseDocumentOperation::_setDocumentIdentifiers() {
  if (!_primaryDocument->firstAnchor()) _setFirstAnchor();
  if (!_primaryDocument->identifier()) _setDocumentIdentifier();
}

void QXParseDocumentOperation::_setFirstAnchor() {
  QXParsedDocument& document = *_primaryDocument;
  if (!document.anchors().empty()) {
    document.setFirstAnchor(document.anchors().front());
  } else {
    QXLog(3, "%@ -- Unable to set firstAnchor because there are no anchors in the document",
          _relativePath);
  }
}

void QXParseDocumentOperation::_setDocumentIdentifier() {
  QXParsedDocument& document = *_primaryDocument;
  if (document.firstAnchor()) {
    document.setIdentifier(document.firstAnchor());
  } else {
    QXLog(2, "%@ -- Unable to set document identifier because document has no id or anchors",
          _relativePath);
  }
}

void QXParseDocumentOperation::_verifyAndLog() const {
  const QXParsedDocument& document = *_primaryDocument;
  if (document.anchorsOnly()) QXLog(3, "%@ -- Anchors will be indexed", _relativePath);
  if (document.title().empty()) QXLog(1, "%@ -- <TITLE> tag missing", _relativePath);
  if (document.anchorsOnly() && document.anchors().empty()) {
    QXLog(1, "%@ -- ROBOTS meta tag says we should only index anchors, but no anchors were found",
          _relativePath);
  }
  if (document.keywordsOnly() && document.keywords().empty()) {
    QXLog(1, "%@ -- ROBOTS meta tag says we should only index keywords, but no keywords were found",
          _relativePath);
  }
}

}  // namespace quorvex
