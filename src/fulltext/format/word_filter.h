#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "fulltext/format/analysis_settings.h"

namespace quorvex {

/// Decides which words an index leaves out.
class WordFilter {
 public:
  explicit WordFilter(AnalysisSettings settings);
  WordFilter(const WordFilter&) = delete;
  WordFilter& operator=(const WordFilter&) = delete;

  const std::string& termCharacters() const { return _settings.termCharacters; }
  bool leavesOut(std::string_view term) const;
  /// Whether it leaves out any term that begins so.
  bool leavesOutBeginningWith(std::string_view beginning) const;

 private:
  AnalysisSettings _settings;
  std::unordered_set<std::string_view> _stopWords;  ///< into the settings
};

}  // namespace quorvex
