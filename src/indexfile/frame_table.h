#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The table at the end of a compressed file: where its frames lie, and where the parts of what they
// contain. It stands in a skippable frame (RFC 8878, section 3.1.2), little-endian; numbers without
// a width are varints (LEB128).
//
//   skippable = magic:u32 size:u32 payload
//   payload   = table footer
//   table     = version frameSize contentSize *packed bounds [first *part]
//   footer    = size:u32 sum:u64 magic:8*u8    ; size of the payload, XXH64 of the table

namespace quorvex {

/// The content of a frame of which only parts will be read. A search touches some dozens of places,
/// so smaller frames open an index sooner; each takes some hundred bytes for tables of its own.
inline constexpr std::uint64_t contentOfFrame = std::uint64_t{64} << 10U;
/// The content of a frame if all of them will be read. Without large ones, what repeats text
/// further up would be stored again.
inline constexpr std::uint64_t largestContentOfFrame = std::uint64_t{4} << 20U;

struct FrameTable {
  static constexpr std::size_t headSize = 8;     ///< of a skippable frame
  static constexpr std::size_t footerSize = 20;  ///< with which the file ends

  std::uint64_t frameSize = contentOfFrame;  ///< of content; the last frame may have less
  std::uint64_t contentSize = 0;
  std::vector<std::uint64_t> packedSizes;  ///< of each frame
  /// Where the parts of the content begin, and where the last one ends.
  std::vector<std::uint64_t> bounds;

  friend bool operator==(const FrameTable&, const FrameTable&) = default;
};

/// Returns the skippable frame.
std::string encodeFrameTable(const FrameTable& table);

/// Returns the size of the skippable frame that a file with these last bytes ends with; 0 for a
/// file without a table.
std::uint64_t sizeOfFrameTable(std::string_view footer);

/// Reads the skippable frame. Null if it is damaged or makes claims that contradict each other or
/// the size of the frames in the file, padding included.
std::optional<FrameTable> decodeFrameTable(std::string_view bytes, std::uint64_t sizeOfFrames);

/// The beginning of a skippable frame of `size` bytes after it.
std::string skippableFrameHead(std::uint32_t size);
/// Returns the size of a skippable frame after its beginning; null for any other bytes.
std::optional<std::uint32_t> sizeOfSkippableFrame(std::string_view head);

}  // namespace quorvex
