#include "common/section_container.h"

#include <algorithm>
#include <numeric>

#include "common/bytes.h"
#include "common/checksum.h"
#include "common/release_memory.h"

namespace quorvex {

namespace {

constexpr std::size_t magicSize = 8;
constexpr std::size_t headerSize = 24;
constexpr std::size_t entrySize = 32;
constexpr std::size_t sumSize = 8;
/// A file with more entries is no container.
constexpr std::uint32_t mostEntries = 64;

}  // namespace

std::uint32_t containerVersion(const LazyBytes& bytes, std::string_view magic) {
  ByteReader reader(bytes.part(0, headerSize));
  return reader.bytes(magicSize) == magic ? reader.u32() : 0;
}

void assembleContainer(const ContainerFormat& format, std::vector<std::string>& sections,
                       std::string& out) {
  const auto count = static_cast<std::uint32_t>(sections.size());
  std::uint64_t offset = headerSize + count * entrySize + sumSize;
  const std::uint64_t size = std::accumulate(
      sections.begin(), sections.end(), offset,
      [](std::uint64_t sum, const std::string& section) { return sum + section.size(); });
  out.clear();
  out.reserve(size);
  out += format.magic;
  appendU32(out, format.version);
  appendU32(out, count);
  appendU64(out, size);
  for (std::uint32_t i = 0; i < count; ++i) {
    appendU32(out, i + 1);
    appendU32(out, 0);
    appendU64(out, offset);
    appendU64(out, sections[i].size());
    appendU64(out, checksum(sections[i]));
    offset += sections[i].size();
  }
  appendU64(out, checksum(out));
  for (std::string& section : sections) {
    out += section;
    releaseMemory(section);
  }
}

std::optional<SectionContainer> SectionContainer::open(const LazyBytes& bytes,
                                                       const ContainerFormat& format) {
  const std::string_view header = bytes.part(0, headerSize);
  ByteReader reader(header);
  if (reader.bytes(magicSize) != format.magic || reader.u32() != format.version) return {};
  const std::uint32_t count = reader.u32();
  if (reader.u64() != bytes.size() || count > mostEntries) return {};
  const std::size_t tableEnd = headerSize + count * entrySize;
  if (tableEnd + sumSize > bytes.size()) return {};
  const std::string_view table = bytes.part(0, tableEnd + sumSize);
  if (table.size() != tableEnd + sumSize ||
      ByteReader(table.substr(tableEnd)).u64() != checksum(table.substr(0, tableEnd))) {
    return {};
  }
  SectionContainer container(format.kinds);
  std::vector<bool> found(format.kinds);
  reader = ByteReader(table.substr(headerSize));
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t kind = reader.u32();
    reader.u32();
    const std::uint64_t offset = reader.u64();
    const std::uint64_t size = reader.u64();
    const std::uint64_t sum = reader.u64();
    if (offset < table.size() || offset > bytes.size() || size > bytes.size() - offset) return {};
    if (kind == 0 || kind > format.kinds) continue;
    if (found[kind - 1]) return {};
    found[kind - 1] = true;
    container._sections[kind - 1].bytes = bytes.sub(offset, size);
    container._sections[kind - 1].sum = sum;
  }
  if (!std::all_of(found.begin(), found.begin() + format.required, [](bool has) { return has; })) {
    return {};
  }
  return container;
}

std::optional<std::vector<std::string>> takeApart(std::string_view container,
                                                  const ContainerFormat& format) {
  const std::optional<SectionContainer> opened = SectionContainer::open(container, format);
  if (!opened) return std::nullopt;
  std::vector<std::string> sections;
  for (std::uint32_t kind = 1; kind <= format.kinds; ++kind)
    sections.emplace_back(opened->section(kind).all());
  return sections;
}

LazyBytes SectionContainer::section(std::uint32_t kind) const {
  Section& section = _sections[kind - 1];
  section.once->run([&] {
    section.isSound = section.bytes.isLazy() || checksum(section.bytes.all()) == section.sum;
  });
  return section.isSound ? section.bytes : LazyBytes();
}

}  // namespace quorvex
