#include "extract/parsed_document.h"

#include "common/format.h"
#include "common/release_memory.h"
#include "common/unicode.h"

namespace quorvex {

std::string QXParsedDocument::absolutePath() const {
  return _path.starts_with('/') ? _path : "/" + _path;
}

std::string QXParsedDocument::absolutePathWithFragment() const {
  return _firstAnchor ? absolutePath() + '#' + *_firstAnchor : absolutePath();
}

std::string QXParsedDocument::preparedTitle() const {
  std::string prepared;
  appendOnOneLine(_title, prepared);
  if (prepared.ends_with(' ')) prepared.pop_back();
  return prepared;
}

std::size_t QXParsedDocument::contentLength() const {
  return _droppedCharacters + characterCount(_content);
}

void QXParsedDocument::dropContent() {
  _droppedCharacters = contentLength();
  releaseMemory(_content);
}

std::string QXParsedDocument::fullText() const {
  std::string text;
  text.reserve(_summary.size() + _keywords.size() + _content.size() + 2);
  return text.append(_summary).append(" ").append(_keywords).append(" ").append(_content);
}

const std::string& QXParsedDocument::summaryGeneratedIfNecessary() const {
  if (!_summary.empty()) return _summary;
  _summaryGenerated.run([this] {
    const auto summary = TSSummaryCreateWithString(_content, _paragraphStarts);
    if (summary == nullptr) return;
    _generatedSummary = TSSummaryCopySentenceSummaryString(summary, 1).value_or(std::string());
  });
  return _generatedSummary;
}

std::optional<std::vector<std::string>> QXParsedDocument::keywordsArray() const {
  if (_keywords.empty()) return std::nullopt;
  std::vector<std::string> keywords;
  std::string_view rest = _keywords;
  for (;;) {
    const std::size_t comma = rest.find(',');
    const std::string_view piece = rest.substr(0, comma);
    if (!piece.empty()) keywords.emplace_back(trimWhitespace(piece));
    if (comma == std::string_view::npos) return keywords;
    rest.remove_prefix(comma + 1);
  }
}

std::string QXParsedDocument::description() const {
  const std::string& generated = summaryGeneratedIfNecessary();
  const auto filled = [](const auto& texts) { return !texts.empty(); };
  const auto present = [](const std::optional<std::string>& text) {
    return text && !text->empty();
  };
  return formatText(
      "\npath: %@\nabsolutePath: %d\ntitle: %d\nsummary: %d\nkeywords: %d\nidentifier: %d\n"
      "firstAnchor: %d\nanchors: %d\nxScriptLinks: %d\nanchorsOnly: %hhd\ndontIndex: %hhd\n"
      "keywordsOnly: %hhd\nfullText: %d\npreparedTitle: %d\nabsolutePathWithFragment: %d\n"
      "summaryGeneratedIfNecessary: %@\ncontent: %d\n",
      {_path, filled(absolutePath()), filled(_title), filled(_summary), filled(_keywords),
       present(_identifier), present(_firstAnchor), filled(_anchors), filled(_xScriptLinks),
       _anchorsOnly, _dontIndex, _keywordsOnly, filled(fullText()), filled(preparedTitle()),
       filled(absolutePathWithFragment()), generated, filled(_content)});
}

}  // namespace quorvex
