#include "fulltext/format/analysis_properties.h"

#include <algorithm>

#include "common/unicode.h"
#include "platform/textsift.h"
#include "text/tokenizer.h"

namespace quorvex {

namespace {

/// Passes an entry to `take`, which returns whether its type is right. True for a missing entry.
template <typename Take>
bool takeEntry(const Dictionary& properties, std::string_view key, Take take) {
  const Value* value = find(properties, key);
  return value == nullptr || take(*value);
}

bool takeStopWords(const Value& value, std::vector<std::string>& stopWords) {
  const Array* words = value.array();
  if (words == nullptr) return false;
  for (const Value& word : *words) {
    if (word.string() == nullptr) return false;
    // No term is longer, even before folding.
    if (word.string()->size() > 3 * maximumTermSize) continue;
    stopWords.push_back(caseFolded(*word.string()));
  }
  return true;
}

}  // namespace

std::optional<AnalysisSettings> analysisSettings(const Dictionary& properties) {
  AnalysisSettings settings;
  const auto takeLength = [&](const Value& value) {
    if (value.integer() == nullptr) return false;
    settings.minimumTermLength =
        static_cast<std::uint64_t>(std::max<std::int64_t>(0, *value.integer()));
    return true;
  };
  const auto takeCharacters = [&](const Value& value) {
    if (value.string() == nullptr) return false;
    settings.termCharacters = *value.string();
    return true;
  };
  const auto takeWords = [&](const Value& value) {
    return takeStopWords(value, settings.stopWords);
  };
  if (!takeEntry(properties, kTSMinTermLength, takeLength) ||
      !takeEntry(properties, kTSTermChars, takeCharacters) ||
      !takeEntry(properties, kTSStopWords, takeWords)) {
    return std::nullopt;
  }
  return settings;
}

}  // namespace quorvex
