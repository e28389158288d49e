#include "fulltext/document.h"

#include <algorithm>

#include "common/bytes.h"

namespace quorvex {

/// Releases the parents in a loop: a long chain must not exhaust the call stack.
TSDocument::~TSDocument() {
  DocumentRef parent = std::move(_parent);
  while (parent != nullptr && parent.use_count() == 1) {
    DocumentRef grandparent = std::move(parent->_parent);
    parent = std::move(grandparent);
  }
}

std::vector<const TSDocument*> lineOf(const TSDocument* document) {
  std::vector<const TSDocument*> line;
  for (; document != nullptr; document = document->parent().get())
    line.push_back(document);
  std::ranges::reverse(line);
  return line;
}

std::string documentIdentity(std::optional<std::uint32_t> parent, std::string_view url) {
  std::string identity;
  identity.reserve(url.size() + sizeof(std::uint64_t));
  appendU64(identity, parent ? std::uint64_t{*parent} + 1 : 0);
  identity += url;
  return identity;
}

}  // namespace quorvex
