#include "progress/screen.h"

#include <sys/ioctl.h>

#include "common/output.h"
#include "progress/progress_view.h"

namespace quorvex {
namespace {

constexpr int defaultColumns = 80;

}  // namespace

Screen::Screen(int descriptor)
    : _descriptor(descriptor), _isTerminal(understandsEscapes(descriptor)) {
  if (_isTerminal) writeFully(_descriptor, "\x1b[?25l");
}

Screen::~Screen() {
  if (!_isTerminal) return;
  // One write, so that nothing else, such as the echo of Ctrl-C, comes in between.
  writeFully(_descriptor, _drawn ? "\n\x1b[?25h" : "\x1b[?25h");
}

bool Screen::show(const RunProgress& progress) {
  return put(_isTerminal ? progressBar(progress, columns()) : progressLine(progress));
}

bool Screen::showText(std::string_view text) {
  const auto room = static_cast<std::size_t>(columns() - 1);
  return put(std::string(_isTerminal ? text.substr(0, room) : text));
}

/// Queried for each drawing, because the window may be resized.
int Screen::columns() const {
  winsize size{};
  if (::ioctl(_descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return defaultColumns;
  return size.ws_col;
}

bool Screen::put(const std::string& line) {
  if (_drawn && line == _lastLine) return true;
  _drawn = true;
  _lastLine = line;
  return writeFully(_descriptor, _isTerminal ? "\r" + line + "\x1b[K" : line + "\n");
}

}  // namespace quorvex
