#include "fulltext/format/word_filter.h"

#include <algorithm>
#include <utility>

#include "common/unicode.h"

namespace quorvex {

WordFilter::WordFilter(AnalysisSettings settings) : _settings(std::move(settings)) {
  _stopWords.insert(_settings.stopWords.begin(), _settings.stopWords.end());
}

bool WordFilter::leavesOut(std::string_view term) const {
  return _stopWords.contains(term) ||
         (_settings.minimumTermLength > 1 && characterCount(term) < _settings.minimumTermLength);
}

bool WordFilter::leavesOutBeginningWith(std::string_view beginning) const {
  return std::ranges::any_of(_stopWords,
                             [&](std::string_view word) { return word.starts_with(beginning); });
}

}  // namespace quorvex
