#include <unordered_map>
#include <vector>

#include "cli/listing.h"
#include "common/format.h"
#include "common/unicode.h"
#include "indexfile/keys.h"
#include "platform/textsift.h"

namespace quorvex {

namespace {

TSIndexRef openIndex(const Dictionary& index) {
  const Value* data = find(index, fullTextIndexKey);
  if (data == nullptr || data->data() == nullptr) return nullptr;
  return TSIndexOpenWithData(*data->data(), std::nullopt);
}

/// Prints an index's documents and the requested details.
class DocumentPrinter {
 public:
  DocumentPrinter(TextOutput& output, TSIndexRef index, bool withTerms, bool verbose)
      : _output(output), _index(std::move(index)), _withTerms(withTerms), _verbose(verbose) {}

  /// Prints depth first: a document, its children, its next sibling. Uses an explicit stack, so
  /// deep nesting cannot exhaust the call stack.
  void printAll() {
    std::vector<std::shared_ptr<TSDocumentIterator>> road;
    road.push_back(TSIndexDocumentIteratorCreate(_index, nullptr));
    while (!road.empty() && !_output.failed()) {
      const TSDocumentRef document = TSIndexDocumentIteratorCopyNext(road.back());
      if (document == nullptr) {
        road.pop_back();
        continue;
      }
      print(document);
      road.push_back(TSIndexDocumentIteratorCreate(_index, document));
    }
  }

 private:
  void print(const TSDocumentRef& document) {
    const std::optional<URL> url = TSDocumentCopyURL(document);
    _output << (url ? validUtf8(url->path()) : std::string(nullText)) << "\n";
    if (_verbose) {
      if (const std::optional<Dictionary> properties =
              TSIndexCopyDocumentProperties(_index, document)) {
        printTitleAndDescription(_output, listedText(find(*properties, titleProperty)),
                                 listedText(find(*properties, descriptionProperty)));
      }
    }
    if (_withTerms) printTerms(document);
    _output << "\n";
  }

  void printTerms(const TSDocumentRef& document) {
    const std::optional<TSDocumentID> id = TSIndexGetDocumentID(_index, document);
    if (!id) return;
    for (const TSTermID term : TSIndexCopyTermIDArrayForDocumentID(_index, *id)) {
      const std::optional<std::string>& text = termText(term);
      if (text) _output << "        " << *text << "\n";
    }
  }

  /// Caches terms: each occurs in many documents, and a lookup decodes its neighbours.
  const std::optional<std::string>& termText(TSTermID term) {
    const auto [entry, isNew] = _terms.try_emplace(term);
    if (isNew) entry->second = TSIndexCopyTermStringForTermID(_index, term);
    return entry->second;
  }

  TextOutput& _output;
  TSIndexRef _index;
  bool _withTerms;
  bool _verbose;
  std::unordered_map<TSTermID, std::optional<std::string>> _terms;
};

void printAnchors(TextOutput& output, const Value* anchors) {
  if (anchors != nullptr && anchors->dictionary() != nullptr) {
    printAnchorNames(output, *anchors->dictionary());
  } else {
    output << nullText << "\n";
  }
}

void printMinTermLength(TextOutput& output, const TSIndexRef& index) {
  if (index == nullptr) return;
  const Dictionary properties = TSIndexGetAnalysisProperties(index);
  if (const Value* length = find(properties, kTSMinTermLength)) {
    output << describe(*length) << "\n";
  }
}

void printStopWords(TextOutput& output, const TSIndexRef& index) {
  if (index == nullptr) return;
  const Dictionary properties = TSIndexGetAnalysisProperties(index);
  const Value* property = find(properties, kTSStopWords);
  if (property == nullptr || property->array() == nullptr) return;
  std::vector<std::string> words;
  for (const Value& word : *property->array())
    words.push_back(describe(word));
  sortCaseInsensitively(words);
  for (const std::string& word : words)
    output << word << "\n";
}

}  // namespace

void listFullTextIndex(TextOutput& output, const Dictionary& dictionary, ListMode mode,
                       bool verbose) {
  const TSIndexRef index = openIndex(dictionary);
  switch (mode) {
    case ListMode::anchors:
      printAnchors(output, find(dictionary, anchorTableKey));
      break;
    case ListMode::anchorDictionary:
      output.writeKeyedDocument(find(dictionary, anchorTableKey));
      break;
    case ListMode::files:
    case ListMode::fileTerms:
      if (index != nullptr) {
        DocumentPrinter(output, index, mode == ListMode::fileTerms, verbose).printAll();
      }
      break;
    case ListMode::indexVersions:
      output.writeKeyedDocument(find(dictionary, versionsRecordKey));
      break;
    case ListMode::minTermLength:
      printMinTermLength(output, index);
      break;
    case ListMode::remoteURL:
      output << listedText(find(dictionary, remoteRootKey)) << "\n";
      break;
    case ListMode::stopwords:
      printStopWords(output, index);
      break;
    case ListMode::rdxSummary:
      printRDXSummary(output, dictionary);
      break;
    case ListMode::none:
      break;
  }
}

}  // namespace quorvex
