#pragma once

#include <memory>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Reads the XML form of a keyed document in pieces, so the file and its tree need not be in memory
/// together. Nothing is loaded or expanded; a DOCTYPE is skipped.
class KeyedDocumentXmlReader {
 public:
  KeyedDocumentXmlReader();
  ~KeyedDocumentXmlReader();
  KeyedDocumentXmlReader(const KeyedDocumentXmlReader&) = delete;
  KeyedDocumentXmlReader& operator=(const KeyedDocumentXmlReader&) = delete;

  /// Returns false once the text is invalid; finish() says why.
  bool append(std::string_view bytes);
  /// Returns the tree after the last piece.
  Result<Value> finish();

 private:
  class Builder;

  std::unique_ptr<Builder> _builder;
};

}  // namespace quorvex
