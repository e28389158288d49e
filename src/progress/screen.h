#pragma once

#include <string>
#include <string_view>

#include "progress/run_follower.h"

namespace quorvex {

/// Where progress shows: one line that is drawn over on a terminal, a line for each change
/// elsewhere. On a terminal the cursor is hidden while the screen lives.
class Screen {
 public:
  /// Does not own the descriptor.
  explicit Screen(int descriptor);
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  /// Draws what has changed since the last time, the terminal's width included. These return false
  /// when the descriptor takes no more output.
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
