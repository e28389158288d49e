// Passes a page's bytes through the parse operation to its record, and that record through a
// full-text index back to the reader's view.

#include "common/unicode.h"
#include "extract/parse_document_operation.h"
#include "fuzz/driver.h"
#include "platform/textsift.h"

using namespace quorvex;
using fuzz::require;

namespace {

/// Checks that the operation collects what a separate query returns.
void compareWithQueries(const QXParsedDocument& document, const Data& page) {
  std::string titles;
  for (const Value& node : QXHTMLParser::objectsForXPath("//title", page, "p").value_or(Array())) {
    if (const Value* text = find(*node.dictionary(), "nodeText")) titles += *text->string() + ' ';
  }
  require(document.title() == compressString(titles));
}

void index(const QXParsedDocument& document) {
  const auto buffer = std::make_shared<std::string>();
  const TSIndexRef written = TSIndexCreateWithMutableData(
      buffer, std::nullopt, TSIndexType::inverted, {{std::string(kTSTermChars), "'"}});
  const TSDocumentRef reference = TSDocumentCreateWithURL(*URL::fileURL("/p"));
  require(TSIndexAddDocumentWithText(written, reference, document.fullText(), false));
  require(TSIndexSetDocumentProperties(written, reference, {{"T", document.preparedTitle()}}));
  TSIndexClose(written);
  const TSIndexRef read = TSIndexOpenWithData(Data(*buffer), std::nullopt);
  require(read != nullptr);
  for (const TSTermID term : TSIndexCopyTermIDArrayForDocumentID(read, 0)) {
    require(isValidUtf8(TSIndexCopyTermStringForTermID(read, term).value()));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Data page{std::string(fuzz::view(bytes, size))};
  for (const std::uint64_t format : {2U, 4U}) {
    IndexSettings settings;
    settings.generateSummaries = format == 4;
    QXParseDocumentOperation operation(page, "p", format, settings);
    operation.main();
    const QXParsedDocument& document = *operation.primaryDocument();
    require(isValidUtf8(document.description()));
    require(isValidUtf8(document.fullText() + document.absolutePathWithFragment()));
    document.keywordsArray();
    if (format == 2) continue;
    index(document);
    if (operation.documents().empty() || document.title().empty()) continue;
    compareWithQueries(document, page);
  }
  return 0;
}
