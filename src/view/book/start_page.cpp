#include "view/book/start_page.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "view/book/file_types.h"

namespace quorvex::view {

namespace {

namespace fs = std::filesystem;

/// A book has its first page near the top; a whole disk is not searched for it.
constexpr std::size_t mostEntries = 20'000;

bool isIndexPage(const std::string& name) {
  return std::ranges::find(indexPages, name) != indexPages.end();
}

/// What a folder holds, hidden files apart, in the order of names.
struct Listing {
  std::vector<std::string> files;
  std::vector<std::string> folders;
};

Listing listingOf(const fs::path& folder, std::size_t& entries) {
  Listing listing;
  std::error_code error;
  for (fs::directory_iterator at(folder, error); !error && at != fs::directory_iterator();
       at.increment(error)) {
    if (++entries > mostEntries) break;
    std::string name = at->path().filename();
    std::error_code gone;
    if (name.starts_with('.')) continue;
    if (at->is_regular_file(gone)) {
      listing.files.push_back(std::move(name));
    } else if (!at->is_symlink(gone) && at->is_directory(gone)) {
      listing.folders.push_back(std::move(name));
    }
  }
  std::ranges::sort(listing.files);
  std::ranges::sort(listing.folders);
  return listing;
}

}  // namespace

std::string startPageOf(const std::string& folder) {
  std::size_t entries = 0;
  std::vector<std::string> level = {"/"};  // folders of one depth, by their paths in the book
  while (!level.empty() && entries <= mostEntries) {
    std::optional<std::string> firstPage;
    std::vector<std::string> below;
    for (const std::string& path : level) {
      const Listing listing = listingOf(folder + path, entries);
      const auto index = std::ranges::find_if(listing.files, isIndexPage);
      if (index != listing.files.end()) return path + *index;
      const auto page = std::ranges::find_if(listing.files, isHtml);
      if (!firstPage && page != listing.files.end()) firstPage = path + *page;
      for (const std::string& each : listing.folders)
        below.push_back(path + each + '/');
    }
    if (firstPage) return *firstPage;
    level = std::move(below);
  }
  return "/";
}

}  // namespace quorvex::view
