#include "common/keyed_document.h"

#include "common/cbor.h"
#include "common/files.h"
#include "common/keyed_document_xml_reader.h"

namespace quorvex {

namespace {

constexpr std::uint64_t maximumKeyedDocumentSize = std::uint64_t{8} << 30U;

/// `Bytes` is a string view, or Data that the tree may share.
template <typename Bytes>
Result<Value> parseBinary(const Bytes& bytes) {
  CborReader reader(bytes);
  if (!reader.takeTag(cborSelfDescribedTag)) return reader.error();
  Result<Value> value = reader.takeValue(AllowedKinds::values());
  if (value && !reader.atEnd()) return Error{"Unexpected data after the document"};
  return value;
}

}  // namespace

Result<Value> parseKeyedDocument(std::string_view bytes) {
  if (bytes.starts_with(cborSelfDescribedBytes)) return parseBinary(bytes);
  KeyedDocumentXmlReader reader;
  reader.append(bytes);
  return reader.finish();
}

Result<Value> readKeyedDocument(const std::string& path) {
  KeyedDocumentXmlReader reader;
  bool first = true;
  bool binary = false;
  const Status read = readFileInPieces(path, maximumKeyedDocumentSize, [&](std::string_view piece) {
    binary = first && piece.starts_with(cborSelfDescribedBytes);
    first = false;
    return !binary && reader.append(piece);
  });
  if (!read) return read.error();
  if (!binary) return reader.finish();
  const Result<Data> bytes = readFile(path, maximumKeyedDocumentSize);
  if (!bytes) return bytes.error();
  return parseBinary(*bytes);
}

}  // namespace quorvex
