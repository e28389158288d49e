#pragma once

#include <string_view>

// The progress notifications of a run: their names and the keys of their user info. Their sender is
// the process id in decimal.

namespace quorvex {

inline constexpr const char* runBegins = "com.corvane.quorvex.beginOperationQueue";
inline constexpr const char* runAdvances = "com.corvane.quorvex.percentCompleted";
inline constexpr const char* runEnds = "com.corvane.quorvex.endOperationQueue";

/// Of runBegins: the number of pages, an integer.
inline constexpr std::string_view operationCountKey = "OperationCount";
/// Of runAdvances: despite its name a fraction, from 0 to 1.
inline constexpr std::string_view percentCompletedKey = "PercentCompleted";

}  // namespace quorvex
