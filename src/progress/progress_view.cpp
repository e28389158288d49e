#include "progress/progress_view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvex {
namespace {

constexpr int narrowestBar = 8;  // with its brackets

int percent(const RunProgress& progress) {
  // Rounded down: only a finished run shows 100.
  return static_cast<int>(std::floor(progress.fraction * 100 + 1e-9));
}

std::string pagesText(const RunProgress& progress) {
  if (!progress.pages) return progress.ended ? "done" : "";
  const auto done = std::llround(progress.fraction * static_cast<double>(*progress.pages));
  return std::to_string(done) + " of " + std::to_string(*progress.pages) +
         (*progress.pages == 1 ? " page" : " pages");
}

}  // namespace

std::string progressBar(const RunProgress& progress, int columns) {
  const int room = std::max(columns - 1, 0);
  std::string percentage = std::to_string(percent(progress)) + "%";
  percentage.insert(0, 4 - percentage.size(), ' ');
  std::string right = " " + percentage;
  std::string pages = pagesText(progress);
  if (progress.pages) {  // at its final width, so that the bar keeps its length
    const std::size_t widest = pagesText({0, progress.pages, 1, true}).size();
    pages.insert(0, widest - pages.size(), ' ');
  }
  if (!pages.empty() && narrowestBar + static_cast<int>(right.size() + pages.size()) + 2 <= room) {
    right += "  " + pages;
  }
  const int width = room - static_cast<int>(right.size());
  if (width < narrowestBar) {
    return percentage.size() <= static_cast<std::size_t>(room) ? percentage : "";
  }
  const auto cells = static_cast<std::size_t>(width - 2);
  const auto filled = static_cast<std::size_t>(progress.fraction * static_cast<double>(cells));
  return "[" + std::string(filled, '#') + std::string(cells - filled, '-') + "]" + right;
}

std::string progressLine(const RunProgress& progress) {
  std::string line =
      std::to_string(progress.process) + ": " + std::to_string(percent(progress)) + " %";
  const std::string pages = pagesText(progress);
  if (!pages.empty()) line += ", " + pages;
  return line;
}

}  // namespace quorvex
