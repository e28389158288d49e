#pragma once

#include <string>

#include "common/result.h"
#include "quorvex/help_index.h"

namespace quorvex {

/// Returns the file URL of a hit's page in the book's folder, with the fragment of its best place.
/// Fails if the book is not a folder that has the page.
Result<std::string> urlOfHit(const std::string& book, const Hit& hit);

/// How a browser's command is run.
enum class BrowserRuns {
  here,   ///< with the signals of this program and its terminal
  apart,  ///< without the terminal: no key there ends it, and what it prints is not shown
};

/// Opens a URL with the first of $BROWSER's commands that works, separated by colons, each with %s
/// for the URL or else the URL behind it; without $BROWSER with xdg-open, which needs a display to
/// run apart. Waits for the command.
Status openInBrowser(const std::string& url, BrowserRuns runs = BrowserRuns::here);

}  // namespace quorvex
