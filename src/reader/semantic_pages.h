#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

#include "common/once.h"
#include "platform/docuvault.h"

namespace quorvex::reader {

/// Finds the pages that the answers of a semantic index refer to. Articles are numbered like
/// full-text documents, unless one form of a file was rebuilt without the other; then the ends of
/// their paths identify pages. Thread-safe.
class SemanticPages {
 public:
  /// `pathOf` returns a page's path, empty if unknown. It must outlive this object.
  SemanticPages(std::size_t pages, std::function<std::string(std::size_t)> pathOf)
      : _pages(pages), _pathOf(std::move(pathOf)) {}

  /// Null for a page that no longer exists.
  std::optional<std::size_t> pageOf(const HelpRDXAnswer& answer) const;

 private:
  bool isPage(std::size_t page, const std::string& subPath) const;

  std::size_t _pages;
  std::function<std::string(std::size_t)> _pathOf;
  mutable Once _namesOnce;
  mutable std::unordered_multimap<std::string, std::size_t> _pagesByName;  ///< last component
};

}  // namespace quorvex::reader
