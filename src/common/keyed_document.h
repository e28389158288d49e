#pragma once

#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// The XML form of a tree. Fails on a searchable item or other object, which a keyed document
/// cannot hold. Text that is not UTF-8, and characters that XML forbids, become U+FFFD.
Result<std::string> keyedDocumentXml(const Value& value);

/// The binary form: one CBOR item behind the self-described tag.
Result<std::string> keyedDocumentBinary(const Value& value);

/// Reads either form; the first bytes tell which.
Result<Value> parseKeyedDocument(std::string_view bytes);

/// Reads the file at `path` and parses it.
Result<Value> readKeyedDocument(const std::string& path);

}  // namespace quorvex
