#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "quorvex/quorvex.h"

// How the C interface gives out what handles hold. A place for a length or a count may be null.

namespace quorvex::reader {

/// What is read from a null handle.
template <typename Handle>
const Handle& orEmpty(const Handle* handle) {
  static const Handle empty;
  return handle == nullptr ? empty : *handle;
}

inline const char* given(const std::string& text, std::size_t* length) {
  if (length != nullptr) *length = text.size();
  return text.c_str();
}

inline const char* given(const std::optional<std::string>& text, std::size_t* length) {
  if (text) return given(*text, length);
  if (length != nullptr) *length = 0;
  return nullptr;
}

inline const quorvex_range* given(const std::vector<quorvex_range>& ranges, std::size_t* count) {
  if (count != nullptr) *count = ranges.size();
  return ranges.data();
}

}  // namespace quorvex::reader
