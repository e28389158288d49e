#pragma once

#include <string>
#include <string_view>

#include "progress/run_follower.h"

namespace quorvex {

/// Displays progress: a line redrawn in place on a terminal, a line for each change elsewhere.
/// Hides a terminal's cursor during its lifetime.
class Screen {
 public:
  /// Does not own the descriptor.
  explicit Screen(int descriptor);
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  /// Redraws when the line or the terminal's width has changed. Both return false when the
  /// descriptor accepts no more output.
  bool show(const RunProgress& progress);
  bool showText(std::string_view text);

 private:
  int columns() const;
  bool put(const std::string& line);

  int _descriptor;
  bool _isTerminal;
  bool _drawn = false;
  std::string _lastLine;
};

}  // namespace quorvex
