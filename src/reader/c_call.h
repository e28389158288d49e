#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "common/unicode.h"
#include "quorvex/quorvex.h"

// How the functions of the C interface are run: exceptions become codes, arguments are checked.

struct quorvex_error {
  quorvex_code code = QUORVEX_OK;
  std::string message;
};

namespace quorvex::reader {

/// Why a function gives nothing. Is caught in attempt().
struct Refusal {
  quorvex_code code;
  std::string message;
};

inline Refusal invalid(const std::string& what) {
  return {QUORVEX_INVALID_ARGUMENT, what};
}

/// Its message is short enough to need no allocation.
inline quorvex_error* noMemory() {
  static quorvex_error error{QUORVEX_NO_MEMORY, "Out of memory"};
  return &error;
}

inline quorvex_error* described(quorvex_code code, std::string_view message) noexcept {
  try {
    return new quorvex_error{code, validUtf8(std::string(message))};
  } catch (const std::bad_alloc&) {
    return noMemory();
  }
}

/// Runs `work` and tells what came of it.
template <typename Work>
quorvex_code attempt(quorvex_error** error, const Work& work) noexcept {
  const auto report = [&](quorvex_code code, std::string_view message) {
    if (error == nullptr) return code;
    *error = described(code, message);
    return (*error)->code;
  };
  if (error != nullptr) *error = nullptr;
  try {
    work();
    return QUORVEX_OK;
  } catch (const Refusal& refusal) {
    return report(refusal.code, refusal.message);
  } catch (const std::bad_alloc&) {
    return report(QUORVEX_NO_MEMORY, noMemory()->message);
  } catch (const std::exception& exception) {
    return report(QUORVEX_FAILED, exception.what());
  }
}

/// Runs `make` and hands what it returns to the caller.
template <typename T, typename Make>
quorvex_code give(T** result, quorvex_error** error, const Make& make) {
  if (result != nullptr) *result = nullptr;
  return attempt(error, [&] {
    if (result == nullptr) throw invalid("There is no place for the result");
    *result = new T(make());
  });
}

template <typename Handle>
auto& required(Handle* handle, const char* name) {
  if (handle == nullptr) throw invalid(std::string("No ") + name);
  return *handle;
}

inline std::string_view bytesOf(const void* bytes, std::size_t size, const char* name) {
  if (size > PTRDIFF_MAX) throw invalid(std::string("The length is out of range: ") + name);
  if (size > 0) required(static_cast<const char*>(bytes), name);
  return {static_cast<const char*>(bytes), size};
}

}  // namespace quorvex::reader
