#pragma once

#include <cstdlib>
#include <string>

#include "common/cbor.h"

// Documents and archives in CBOR that the product only reads.

namespace quorvex::test {

/// What `write(writer)` writes behind the self-described tag; a failure ends the program.
template <typename Write>
std::string selfDescribed(const Write& write) {
  std::string bytes;
  CborWriter writer([&bytes](std::string_view piece) {
    bytes += piece;
    return true;
  });
  writer.tag(cborSelfDescribedTag);
  write(writer);
  if (!writer.finish()) std::abort();
  return bytes;
}

/// A keyed document in its binary form.
inline std::string binaryDocument(const Value& root) {
  return selfDescribed([&](CborWriter& writer) { writer.value(root); });
}

/// A keyed archive of any root.
inline std::string keyed(const Value& root) {
  return selfDescribed([&](CborWriter& writer) {
    writer.mapStart(3);
    writer.text("root");
    writer.value(root);
    writer.text("version");
    writer.integer(1);
    writer.text("archiver");
    writer.text("QXKeyedArchiver");
  });
}

}  // namespace quorvex::test
