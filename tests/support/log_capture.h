#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "common/log.h"

namespace quorvex::test {

/// Returns what `body` prints at a verbosity: standard output, then standard error.
inline std::string printed(int verbosity, const std::function<void()>& body) {
  const int before = logVerbosity();
  setLogVerbosity(verbosity);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  body();
  std::string text = testing::internal::GetCapturedStdout();
  text += testing::internal::GetCapturedStderr();
  setLogVerbosity(before);
  return text;
}

}  // namespace quorvex::test
