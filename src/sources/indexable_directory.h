#pragma once

#include <mutex>

#include "sources/indexable.h"

namespace quorvex {

/// Provides the files of a folder tree on disk.
class QXIndexableDirectory : public QXIndexable {
 public:
  /// `baseURL`: the root folder; only its decoded path is used.
  explicit QXIndexableDirectory(URL baseURL) : _baseURL(std::move(baseURL)) {}

  /// Lists all entries at every depth: files and folders, even hidden ones. Links to folders are
  /// listed but not followed. Each call walks the tree again.
  std::optional<std::vector<std::string>> subpaths() override;
  std::optional<Data> contentsOfSubpath(const std::string& subpath) override;
  /// Accepts names ending in ".htm" or ".html", in any case.
  std::optional<Predicate> defaultIncludePredicate() const override;

  std::optional<URL> baseURL() const override;
  void setBaseURL(URL url);

  /// The decoded path of the root.
  std::string description() const;

 private:
  mutable std::mutex _mutex;  ///< readers never see a half-replaced URL
  URL _baseURL;
};

}  // namespace quorvex
