#pragma once

#include <optional>

#include "common/value.h"
#include "fulltext/format/analysis_settings.h"

namespace quorvex {

/// Returns the settings in the analysis properties (platform/textsift.h); null when a property has
/// the wrong type.
std::optional<AnalysisSettings> analysisSettings(const Dictionary& properties);

}  // namespace quorvex
