#include "common/large_text.h"

#include <cstdint>

#include <sys/mman.h>

namespace quorvex {

void reserveLarge(std::string& text, std::size_t size) {
  text.reserve(size);
  constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20U;
  const auto start = reinterpret_cast<std::uintptr_t>(text.data());
  const std::uintptr_t begin = (start + largePage - 1) & ~(largePage - 1);
  const std::uintptr_t end = (start + text.capacity()) & ~(largePage - 1);
  // Advice that the system does not take changes nothing.
  if (begin < end) ::madvise(text.data() + (begin - start), end - begin, MADV_HUGEPAGE);
}

}  // namespace quorvex
