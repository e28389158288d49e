#include "text/ideograph_runs.h"

#include <array>
#include <functional>

namespace quorvex {

namespace {

/// Up to some hundred bytes each.
constexpr std::size_t entryCount = 4096;

}  // namespace

std::uint64_t IdeographRuns::wordEnds(std::string_view run, icu::BreakIterator& iterator) {
  if (_entries.empty()) _entries.resize(entryCount);
  Entry& entry = _entries[std::hash<std::string_view>()(run) % entryCount];
  if (entry.run != run) {
    entry.wordEnds = cut(run, iterator);
    entry.run = run;
  }
  return entry.wordEnds;
}

std::uint64_t IdeographRuns::cut(std::string_view run, icu::BreakIterator& iterator) {
  std::array<char16_t, mostCharacters> characters{};
  const std::size_t count = run.size() / characterSize;
  for (std::size_t i = 0; i < count; ++i) {
    const auto bits = [&](std::size_t byte, unsigned mask) {
      return static_cast<unsigned char>(run[i * characterSize + byte]) & mask;
    };
    characters[i] =
        static_cast<char16_t>(bits(0, 0xF) << 12U | bits(1, 0x3F) << 6U | bits(2, 0x3F));
  }
  UErrorCode status = U_ZERO_ERROR;
  utext_openUChars(&_text, characters.data(), static_cast<std::int64_t>(count), &status);
  iterator.setText(&_text, status);
  iterator.first();
  std::uint64_t ends = std::uint64_t{1} << (count - 1);
  for (std::int32_t end = iterator.next(); end != icu::BreakIterator::DONE; end = iterator.next())
    ends |= std::uint64_t{1} << static_cast<unsigned>(end - 1);
  return ends;
}

}  // namespace quorvex
