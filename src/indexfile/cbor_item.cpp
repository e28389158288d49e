#include "indexfile/cbor_item.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex::reader {

namespace {

struct Head {
  unsigned majorType;
  std::uint64_t number;
};

std::optional<Head> takeHead(std::string_view& rest) {
  if (rest.empty()) return std::nullopt;
  const unsigned first = static_cast<unsigned char>(rest.front());
  rest.remove_prefix(1);
  constexpr unsigned oneByte = 24;
  constexpr unsigned eightBytes = 27;
  const unsigned info = first & 0x1FU;
  if (info < oneByte) return Head{first >> 5U, info};
  if (info > eightBytes) return std::nullopt;
  const std::size_t size = std::size_t{1} << (info - oneByte);
  if (rest.size() < size) return std::nullopt;
  std::uint64_t number = 0;
  for (const char byte : rest.substr(0, size))
    number = number << 8U | static_cast<unsigned char>(byte);
  rest.remove_prefix(size);
  return Head{first >> 5U, number};
}

enum MajorType : unsigned { bytes = 2, text = 3, array = 4, map = 5, tag = 6 };

/// How many items follow that belong to this one; its content is passed over.
std::optional<std::uint64_t> passContent(const Head& head, std::string_view& rest) {
  switch (head.majorType) {
    case bytes:
    case text:
      if (head.number > rest.size()) return std::nullopt;
      rest.remove_prefix(static_cast<std::size_t>(head.number));
      return 0;
    case array:
    case map:
      if (head.number > rest.size()) return std::nullopt;
      return head.majorType == map ? 2 * head.number : head.number;
    case tag:
      return 1;
    default:
      return 0;
  }
}

}  // namespace

std::string_view takeCborItem(std::string_view& rest) {
  std::string_view left = rest;
  for (std::uint64_t items = 1; items > 0; --items) {
    const std::optional<Head> head = takeHead(left);
    if (!head) return {};
    const std::optional<std::uint64_t> inside = passContent(*head, left);
    // Each item that is still to come takes a byte or more.
    if (!inside || items - 1 + *inside > left.size()) return {};
    items += *inside;
  }
  const std::string_view item = rest.substr(0, rest.size() - left.size());
  rest = left;
  return item;
}

}  // namespace quorvex::reader
