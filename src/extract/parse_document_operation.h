#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "extract/html_parser.h"
#include "extract/index_settings.h"
#include "extract/parsed_document.h"
#include "platform/operation_queue.h"

namespace quorvex {

class QXIndexFileGenerator;
class QXParseDocumentOperation;

/// Is notified when parse operations end.
class QXParseDocumentManager {
 public:
  virtual ~QXParseDocumentManager() = default;
  /// Called for each record that an operation has filled, on its thread, before completed(). What
  /// it throws is an error of the operation.
  virtual void parsed(QXParsedDocument& /*document*/) {}
  /// Called once by each operation, on the thread that ran it, whether or not parsing succeeded.
  virtual void completed(QXParseDocumentOperation& operation) = 0;
};

/// Turns one HTML page into one document record: runs eight queries, obeys the
/// robots directives, and passes the record to its manager. Runs once; accesses only its own
/// members and the query layer.
class QXParseDocumentOperation : public Operation {
 public:
  /// `data`: the page's bytes, released when the parser has its copy. `format`: 4 for searchable
  /// items, which indexes every page in full; otherwise 2. `settings` must outlive the operation.
  QXParseDocumentOperation(Data data, std::string relativePath, std::uint64_t format,
                           const IndexSettings& settings);

  void main() noexcept override;

  std::shared_ptr<QXParseDocumentManager> manager;

  const std::string& relativePath() const { return _relativePath; }
  const Data& data() const { return _data; }
  std::uint64_t indexType() const { return _indexType; }
  bool indexEntireDocument() const { return _indexEntireDocument; }
  /// Empty, or the page's record.
  std::vector<std::shared_ptr<QXParsedDocument>>& documents() { return _documents; }
  const std::shared_ptr<QXParsedDocument>& primaryDocument() const { return _primaryDocument; }

  bool indexAnchors() const { return _settings.indexAnchors; }
  /// Whether a missing summary is made here, on the operation's thread.
  bool generateSummaries() const { return _settings.generateSummaries; }

  // For the manager; extraction reads none of them.
  std::uint32_t noSearchCount = 0;
  std::uint64_t logLevel = 0;
  std::uint64_t muted = 0;
  Dictionary xpaths;
  std::shared_ptr<QXParseDocumentManager> indexFileGenator;

 private:
  using Page = QXHTMLParser::Page;

  void _parseHTML();
  void _setDocumentMetaProperties(Page& page);
  void _setDocumentIndexibleProperties(Page& page);
  void _addToString(std::string& target, Page& page, PageQuery query);
  void _addContent(Page& page);
  void _addToAnchors(OrderedStringSet& target, Page& page, PageQuery query);
  void _addToLinks(std::vector<ScriptLink>& target, Page& page, PageQuery query);
  void _setDocumentIdentifiers();
  void _setFirstAnchor();
  void _setDocumentIdentifier();
  void _verifyAndLog() const;

  bool _indexEntireDocument = false;
  std::string _relativePath;
  std::vector<std::shared_ptr<QXParsedDocument>> _documents;
  std::shared_ptr<QXParsedDocument> _primaryDocument;
  Data _data;
  std::uint64_t _indexType;
  const IndexSettings& _settings;
};

/// Trims white space and line breaks from both ends and collapses runs of spaces; inner tabs and
/// line breaks stay. Converts two sets of ascending offsets into the text to offsets into the
/// result.
std::string compressString(std::string_view text, std::span<std::size_t> first = {},
                           std::span<std::size_t> second = {});

}  // namespace quorvex
