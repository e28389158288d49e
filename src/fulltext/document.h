#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/url.h"

namespace quorvex {

class IndexReader;
class TSDocument;
using DocumentRef = std::shared_ptr<const TSDocument>;

/// A document reference: a URL below an optional parent. One returned by an iterator remembers its
/// id in the index, which saves a look-up.
class TSDocument {
 public:
  TSDocument(DocumentRef parent, std::optional<URL> url)
      : _parent(std::move(parent)), _url(std::move(url)) {}
  TSDocument(DocumentRef parent, std::optional<URL> url, std::weak_ptr<const IndexReader> index,
             std::uint32_t id)
      : _parent(std::move(parent)), _url(std::move(url)), _index(std::move(index)), _id(id) {}
  TSDocument(const TSDocument&) = delete;
  TSDocument& operator=(const TSDocument&) = delete;
  ~TSDocument();

  const DocumentRef& parent() const { return _parent; }
  const std::optional<URL>& url() const { return _url; }
  /// The id, if the document came from `index`.
  std::optional<std::uint32_t> idIn(const std::shared_ptr<const IndexReader>& index) const {
    return index != nullptr && _index.lock() == index ? std::optional(_id) : std::nullopt;
  }

 private:
  mutable DocumentRef _parent;
  std::optional<URL> _url;
  std::weak_ptr<const IndexReader> _index;
  std::uint32_t _id = 0;
};

/// Returns the ancestors of a document, top-level first, and the document itself.
std::vector<const TSDocument*> lineOf(const TSDocument* document);

/// Returns the key that identifies a document in an index: its parent's id and its URL.
std::string documentIdentity(std::optional<std::uint32_t> parent, std::string_view url);

}  // namespace quorvex
