#pragma once

#include <memory>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Reads the XML form of a keyed document that arrives in pieces, so that a file need not be held
/// beside the tree that it becomes. Nothing is loaded or expanded; a DOCTYPE is skipped.
class KeyedDocumentXmlReader {
 public:
  KeyedDocumentXmlReader();
  ~KeyedDocumentXmlReader();
  KeyedDocumentXmlReader(const KeyedDocumentXmlReader&) = delete;
  KeyedDocumentXmlReader& operator=(const KeyedDocumentXmlReader&) = delete;

  /// False when the text has been found bad; finish() tells why.
  bool append(std::string_view bytes);
  /// The tree, after the last piece.
  Result<Value> finish();

 private:
  class Builder;

  std::unique_ptr<Builder> _builder;
};

}  // namespace quorvex
