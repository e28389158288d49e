// Reads either form of a keyed document. A readable tree must survive writing and reading in both
// forms, except for characters that XML cannot contain.

#include "common/keyed_document.h"

#include "fuzz/driver.h"
#include "tests/support/cbor_forms.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Result<Value> tree = parseKeyedDocument(fuzz::view(bytes, size));
  if (!tree) return 0;
  describe(*tree);
  const std::string binary = test::binaryDocument(*tree);
  fuzz::require(test::binaryDocument(parseKeyedDocument(binary).value()) == binary);
  const Value repaired = parseKeyedDocument(keyedDocumentXml(*tree).value()).value();
  const std::string xml = keyedDocumentXml(repaired).value();
  fuzz::require(keyedDocumentXml(parseKeyedDocument(xml).value()).value() == xml);
  return 0;
}
