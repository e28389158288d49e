#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "extract/ordered_string_set.h"

namespace quorvex {

/// A help link of a page, under the keys "Link" and "Name".
using ScriptLink = std::map<std::string, std::string, std::less<>>;

/// One indexable unit, normally one page. Filled by one parse operation on its thread; only read
/// afterwards, then from any thread. The texts and collections are appended to in place and never
/// replaced. Derived values are computed on every call, but for the generated summary.
class QXParsedDocument {
 public:
  /// `path`: relative to the help book's root, as the page source gave it; null makes it empty.
  explicit QXParsedDocument(std::optional<std::string> path = std::nullopt)
      : _path(std::move(path).value_or(std::string())) {}

  const std::string& path() const { return _path; }

  std::string& title() { return _title; }
  const std::string& title() const { return _title; }
  /// Text of the description meta tags.
  std::string& summary() { return _summary; }
  const std::string& summary() const { return _summary; }
  /// Text of the keywords meta tags, a comma-separated list.
  std::string& keywords() { return _keywords; }
  const std::string& keywords() const { return _keywords; }
  /// Body text, when the whole page is indexed.
  std::string& content() { return _content; }
  const std::string& content() const { return _content; }
  /// Where paragraphs of the content begin, in bytes, ascending. Only the first call for a
  /// generated summary needs them.
  std::vector<std::size_t>& paragraphStarts() { return _paragraphStarts; }
  const std::vector<std::size_t>& paragraphStarts() const { return _paragraphStarts; }
  /// Anchor names in page order.
  OrderedStringSet& anchors() { return _anchors; }
  const OrderedStringSet& anchors() const { return _anchors; }
  std::vector<ScriptLink>& xScriptLinks() { return _xScriptLinks; }
  const std::vector<ScriptLink>& xScriptLinks() const { return _xScriptLinks; }

  const std::optional<std::string>& firstAnchor() const { return _firstAnchor; }
  void setFirstAnchor(std::optional<std::string> anchor) { _firstAnchor = std::move(anchor); }
  /// The body's id in lower case, or else the first anchor; null when the page has neither.
  const std::optional<std::string>& identifier() const { return _identifier; }
  void setIdentifier(std::optional<std::string> identifier) { _identifier = std::move(identifier); }

  // What the page's robots directives ask for.
  bool anchorsOnly() const { return _anchorsOnly; }
  void setAnchorsOnly(bool flag) { _anchorsOnly = flag; }
  bool dontIndex() const { return _dontIndex; }
  void setDontIndex(bool flag) { _dontIndex = flag; }
  bool keywordsOnly() const { return _keywordsOnly; }
  void setKeywordsOnly(bool flag) { _keywordsOnly = flag; }

  /// The path with a slash in front.
  std::string absolutePath() const;
  /// The absolute path and, when there is a first anchor (an empty one too), "#" and that anchor.
  std::string absolutePathWithFragment() const;
  /// The title's words with one space between them.
  std::string preparedTitle() const;
  /// Summary, keywords and content with a space between them, whether empty or not.
  std::string fullText() const;
  /// The summary, or else the sentence that represents the content best; empty when there is none.
  /// The first call makes it, and changes of the document after that do not reach it.
  const std::string& summaryGeneratedIfNecessary() const;
  /// The keywords, cut at commas and trimmed; null when there are none. Pieces without a character
  /// are dropped, but a piece of white space stays as an empty keyword.
  std::optional<std::vector<std::string>> keywordsArray() const;
  /// The record at a glance, for the log. Runs the summariser when there is no summary.
  std::string description() const;

 private:
  std::string _title;
  std::string _summary;
  std::string _keywords;
  std::string _content;
  std::vector<std::size_t> _paragraphStarts;
  std::string _path;
  std::optional<std::string> _firstAnchor;
  OrderedStringSet _anchors;
  std::vector<ScriptLink> _xScriptLinks;
  bool _anchorsOnly = false;
  bool _dontIndex = false;
  bool _keywordsOnly = false;
  std::optional<std::string> _identifier;
  mutable std::once_flag _summaryGenerated;
  mutable std::string _generatedSummary;
};

}  // namespace quorvex
