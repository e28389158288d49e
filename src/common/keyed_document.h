#pragma once

#include <string>
#include <string_view>

#include "common/result.h"
#include "common/value.h"

namespace quorvex {

/// Returns the XML form of a tree. Fails on searchable items and other objects, which a keyed
/// document cannot contain. Invalid UTF-8 and characters that XML forbids become U+FFFD.
Result<std::string> keyedDocumentXml(const Value& value);

/// Reads the XML or binary (CBOR) form, detected by the first bytes.
Result<Value> parseKeyedDocument(std::string_view bytes);

/// Reads the file at `path` and parses it.
Result<Value> readKeyedDocument(const std::string& path);

}  // namespace quorvex
