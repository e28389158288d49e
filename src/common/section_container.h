#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/lazy_bytes.h"
#include "common/once.h"

// The container of the full-text and of the semantic index, little-endian:
//
//   container = header *entry tableSum *section
//   header    = magic:8*u8 version:u32 entries:u32 size:u64     ; size of the whole
//   entry     = kind:u32 zero:u32 offset:u64 size:u64 sum:u64   ; location of a section
//   tableSum  = u64                                             ; checksum of all bytes before it

namespace quorvex {

/// What tells one kind of container from another.
struct ContainerFormat {
  std::string_view magic;  ///< eight bytes
  std::uint32_t version;
  std::uint32_t kinds;     ///< sections have the kinds 1 to this
  std::uint32_t required;  ///< of these, the first may not be absent
};

/// Returns the version of a container with this magic; 0 if the bytes are none.
std::uint32_t containerVersion(const LazyBytes& bytes, std::string_view magic);

/// Assembles a container from its sections, those of kind 1 first; empties each once it is written.
void assembleContainer(const ContainerFormat& format, std::vector<std::string>& sections,
                       std::string& out);

/// Returns copies of all sections, for those who put them together again; null when the bytes are
/// no container of this format.
std::optional<std::vector<std::string>> takeApart(std::string_view container,
                                                  const ContainerFormat& format);

/// The sections of a container. Thread-safe.
class SectionContainer {
 public:
  /// Reads and fully checks only the header and the table; skips sections of unknown kinds. Null
  /// when the bytes are no container of this format.
  static std::optional<SectionContainer> open(const LazyBytes& bytes,
                                              const ContainerFormat& format);

  /// Returns a section; empty if it is absent or does not match its checksum, which is verified on
  /// first use. That of lazy bytes is not, because they are checked when they are unpacked.
  LazyBytes section(std::uint32_t kind) const;
  /// The size that the table states.
  std::size_t sizeOf(std::uint32_t kind) const { return _sections[kind - 1].bytes.size(); }

 private:
  struct Section {
    LazyBytes bytes;
    std::uint64_t sum = 0;
    bool isSound = false;
    std::unique_ptr<Once> once = std::make_unique<Once>();
  };

  explicit SectionContainer(std::uint32_t kinds) : _sections(kinds) {}

  mutable std::vector<Section> _sections;
};

}  // namespace quorvex
