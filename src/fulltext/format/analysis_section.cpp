#include "fulltext/format/analysis_section.h"

#include <algorithm>

#include "common/bytes.h"
#include "common/property_codec.h"

namespace quorvex {

std::optional<std::string> encodeAnalysis(const IndexDescription& description) {
  const Dictionary& properties = description.analysisProperties;
  const auto isStorable = [](const auto& entry) { return isEncodable(entry.second); };
  if (!std::ranges::all_of(properties, isStorable)) return std::nullopt;
  std::string out(1, description.name ? '\1' : '\0');
  if (description.name) appendText(out, *description.name);
  appendProperties(out, properties);
  return out;
}

IndexDescription decodeAnalysis(std::string_view section) {
  IndexDescription description;
  ByteReader reader(section);
  if (reader.byte() != 0) description.name = reader.text();
  description.analysisProperties = readProperties(reader).properties;
  return description;
}

}  // namespace quorvex
