#include "semantic/format/index_format.h"

#include <bit>

#include "common/checksum.h"

namespace quorvex::docuvault {

namespace {

constexpr std::size_t checksumEnd = 32;
constexpr std::size_t headerSize = checksumEnd + sectionCount * 16;

constexpr std::size_t padded(std::size_t size) {
  return (size + 7) / 8 * 8;
}

}  // namespace

std::string joinSections(const Sections& sections) {
  std::size_t size = headerSize;
  for (const std::string_view section : sections)
    size += padded(section.size());
  std::string index(indexMagic);
  index.reserve(size);
  appendU32(index, indexVersion);
  appendU32(index, sectionCount);
  appendU64(index, size);
  appendU64(index, 0);
  std::size_t offset = headerSize;
  for (const std::string_view section : sections) {
    appendU64(index, offset);
    appendU64(index, section.size());
    offset += padded(section.size());
  }
  for (const std::string_view section : sections) {
    index.append(section);
    index.resize(padded(index.size()));
  }
  std::string sum;
  appendU64(sum, checksum(std::string_view(index).substr(checksumEnd)));
  index.replace(checksumEnd - sum.size(), sum.size(), sum);
  return index;
}

std::optional<Sections> splitSections(std::string_view bytes) {
  if (bytes.size() < headerSize) return std::nullopt;
  ByteReader header(bytes);
  if (header.bytes(indexMagic.size()) != indexMagic || header.u32() != indexVersion ||
      header.u32() != sectionCount || header.u64() != bytes.size()) {
    return std::nullopt;
  }
  if (header.u64() != checksum(bytes.substr(checksumEnd))) return std::nullopt;
  Sections sections;
  for (std::string_view& section : sections) {
    const std::uint64_t offset = header.u64();
    const std::uint64_t length = header.u64();
    if (offset > bytes.size() || length > bytes.size() - offset) return std::nullopt;
    section = bytes.substr(offset, length);
  }
  return sections;
}

double readDouble(ByteReader& reader) {
  return std::bit_cast<double>(reader.u64());
}

std::uint64_t readCount(ByteReader& reader) {
  const std::uint64_t count = reader.varint();
  return count <= reader.rest().size() ? count : 0;
}

void appendFloat(std::string& out, float number) {
  appendU32(out, std::bit_cast<std::uint32_t>(number));
}

void appendDouble(std::string& out, double number) {
  appendU64(out, std::bit_cast<std::uint64_t>(number));
}

std::string encodeAttributes(const Dictionary& attributes) {
  std::string items;
  std::size_t count = 0;
  for (const auto& [key, value] : attributes) {
    std::string item;
    if (const bool* flag = value.boolean()) {
      item = {'\0', static_cast<char>(*flag ? 1 : 0)};
    } else if (const std::int64_t* integer = value.integer()) {
      item = {'\1'};
      appendU64(item, static_cast<std::uint64_t>(*integer));
    } else if (const double* real = value.real()) {
      item = {'\2'};
      appendDouble(item, *real);
    } else if (const std::string* text = value.string()) {
      item = {'\3'};
      appendText(item, *text);
    } else if (const Data* data = value.data()) {
      item = {'\4'};
      appendText(item, data->bytes());
    } else {
      continue;
    }
    ++count;
    appendText(items, key);
    items += item;
  }
  std::string result;
  appendVarint(result, count);
  return result + items;
}

std::optional<Dictionary> decodeAttributes(std::string_view bytes) {
  ByteReader reader(bytes);
  Dictionary attributes;
  for (std::uint64_t left = readCount(reader); left > 0 && reader.ok(); --left) {
    std::string key(reader.text());
    std::optional<Value> value;
    switch (reader.byte()) {
      case 0:
        value = reader.byte() != 0;
        break;
      case 1:
        value = static_cast<std::int64_t>(reader.u64());
        break;
      case 2:
        value = readDouble(reader);
        break;
      case 3:
        value = reader.text();
        break;
      case 4:
        value = Data(std::string(reader.text()));
        break;
      default:
        return std::nullopt;
    }
    attributes.insert_or_assign(std::move(key), *std::move(value));
  }
  if (!reader.ok()) return std::nullopt;
  return attributes;
}

}  // namespace quorvex::docuvault
