#include "common/fill_buffer.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

#include <sys/mman.h>

namespace quorvex {

namespace {

/// Advises on the part that large pages can back. The system may ignore the advice.
void advise(char* bytes, std::size_t size, int advice) {
  constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20U;
  const auto start = reinterpret_cast<std::uintptr_t>(bytes);
  const std::uintptr_t begin = (start + largePage - 1) & ~(largePage - 1);
  const std::uintptr_t end = (start + size) & ~(largePage - 1);
  if (begin < end) ::madvise(bytes + (begin - start), end - begin, advice);
}

}  // namespace

void FillBuffer::resize(std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): see the header
  void* const bytes = std::realloc(_bytes.get(), std::max<std::size_t>(size, 1));
  if (bytes == nullptr) throw std::bad_alloc();
  // realloc freed or kept it. NOLINTNEXTLINE(bugprone-unused-return-value)
  static_cast<void>(_bytes.release());
  _bytes.reset(static_cast<char*>(bytes));
  _size = size;
  advise(_bytes.get(), _size, MADV_HUGEPAGE);
}

void FillBuffer::populate() const {
  advise(_bytes.get(), _size, MADV_POPULATE_WRITE);
}

Data FillBuffer::take(std::size_t filled) {
  const std::shared_ptr<const char> owner(std::move(_bytes));
  return {owner, std::string_view(owner.get(), filled)};
}

}  // namespace quorvex
