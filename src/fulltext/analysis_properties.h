#pragma once

#include <optional>

#include "common/value.h"
#include "fulltext/format/analysis_settings.h"

namespace quorvex {

/// The settings in the analysis properties of platform/textsift.h; null when a property is of the
/// wrong kind.
std::optional<AnalysisSettings> analysisSettings(const Dictionary& properties);

}  // namespace quorvex
