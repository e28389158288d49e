#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/docuvault.h"

namespace quorvex::reader {

/// Finds the pages that the answers of a semantic index mean. The index counts articles as the
/// full-text index counts documents, unless one form of a file was made anew without the other;
/// then pages are told by the ends of their paths. Safe from several threads.
class SemanticPages {
 public:
  /// `pathOf`: of a page, empty when it is not known. It must be callable as long as this lives.
  SemanticPages(std::size_t pages, std::function<std::string(std::size_t)> pathOf)
      : _pages(pages), _pathOf(std::move(pathOf)) {}

  /// Null for a page that is there no more.
  std::optional<std::size_t> pageOf(const HelpRDXAnswer& answer) const;

 private:
  bool isPage(std::size_t page, const std::string& subPath) const;

  std::size_t _pages;
  std::function<std::string(std::size_t)> _pathOf;
  mutable std::once_flag _namesOnce;
  mutable std::unordered_multimap<std::string, std::size_t> _pagesByName;  ///< last component
};

}  // namespace quorvex::reader
