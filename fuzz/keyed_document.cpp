// Either form of a keyed document. What can be read can be written in both forms and reads back as
// the same tree, but for characters that XML cannot hold.

#include "common/keyed_document.h"

#include "fuzz/driver.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Result<Value> tree = parseKeyedDocument(fuzz::view(bytes, size));
  if (!tree) return 0;
  describe(*tree);
  const std::string binary = keyedDocumentBinary(*tree).value();
  fuzz::require(keyedDocumentBinary(parseKeyedDocument(binary).value()).value() == binary);
  const Value repaired = parseKeyedDocument(keyedDocumentXml(*tree).value()).value();
  const std::string xml = keyedDocumentXml(repaired).value();
  fuzz::require(keyedDocumentXml(parseKeyedDocument(xml).value()).value() == xml);
  return 0;
}
