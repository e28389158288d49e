#include "common/base64.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorvex {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t notInAlphabet = 1U << 24U;

/// One table per place in a group: a character's six bits, shifted to where they belong.
using PlaceTable = std::array<std::uint32_t, 256>;

constexpr PlaceTable placeTable(unsigned shift) {
  PlaceTable table{};
  table.fill(notInAlphabet);
  for (std::uint32_t i = 0; i < alphabet.size(); ++i) {
    table[static_cast<unsigned char>(alphabet[i])] = i << shift;
  }
  return table;
}

constexpr std::array<PlaceTable, 4> places = {placeTable(18), placeTable(12), placeTable(6),
                                              placeTable(0)};

bool isXmlWhiteSpace(unsigned char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

void putGroup(char* out, std::uint32_t group) {
  out[0] = static_cast<char>(group >> 16U);
  out[1] = static_cast<char>(group >> 8U & 0xFFU);
  out[2] = static_cast<char>(group & 0xFFU);
}

}  // namespace

std::string base64Encoded(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8U | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (unsigned k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? alphabet[group >> (18U - 6U * k) & 63U] : '=';
    }
  }
  return text;
}

bool Base64Decoder::append(std::string_view text) {
  const std::size_t atMost = _size + text.size() / 4 * 3 + 6;
  if (_bytes.size() < atMost) {
    if (_bytes.capacity() < atMost) _bytes.reserve(std::max(atMost, _bytes.capacity() * 2));
    _bytes.resize(atMost);
  }
  const auto* next = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = next + text.size();
  while (next < end) {
    if (_pending == 0 && _padding == 0) {
      while (end - next >= 4) {
        const std::uint32_t group =
            places[0][next[0]] | places[1][next[1]] | places[2][next[2]] | places[3][next[3]];
        if ((group & notInAlphabet) != 0) break;
        putGroup(_bytes.data() + _size, group);
        _size += 3;
        next += 4;
      }
      if (next == end) break;
    }
    if (!appendSingly(*next++)) return false;
  }
  return true;
}

bool Base64Decoder::appendSingly(unsigned char character) {
  if (isXmlWhiteSpace(character)) return true;
  if (character == '=') {
    if (_pending < 2) return false;
    ++_padding;
  } else if (_padding > 0 || places[3][character] == notInAlphabet) {
    return false;
  } else {
    _group |= places[_pending][character];
  }
  if (++_pending < 4) return true;
  putGroup(_bytes.data() + _size, _group);
  _size += 3 - _padding;
  _pending = 0;
  _group = 0;
  return true;
}

std::string Base64Decoder::take() {
  _bytes.resize(_size);
  // Otherwise the value would keep the spare capacity for life.
  if (_bytes.capacity() > _size + _size / 8) _bytes.shrink_to_fit();
  Base64Decoder finished;
  std::swap(*this, finished);
  return std::move(finished._bytes);
}

}  // namespace quorvex
