#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/predicate.h"
#include "common/url.h"
#include "common/value.h"

namespace quorvex {

/// A page source: lists the pages and provides their bytes. Used by one thread. Failures are logged
/// and return null.
class QXIndexable {
 public:
  QXIndexable() = default;
  QXIndexable(const QXIndexable&) = delete;
  QXIndexable& operator=(const QXIndexable&) = delete;
  virtual ~QXIndexable() = default;

  /// The pages' paths relative to the source's root, in no particular order; null when the source
  /// cannot list them.
  virtual std::optional<std::vector<std::string>> subpaths() = 0;
  /// A page's raw bytes.
  virtual std::optional<Data> contentsOfSubpath(const std::string& subpath) = 0;
  /// Selects subpaths that are pages.
  virtual std::optional<Predicate> defaultIncludePredicate() const = 0;
  /// The source's root folder.
  virtual std::optional<URL> baseURL() const = 0;
};

}  // namespace quorvex
