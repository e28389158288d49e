#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/predicate.h"
#include "common/url.h"
#include "common/value.h"

namespace quorvex {

/// A page source: tells which pages exist and hands over their bytes. Used by one thread. Nothing
/// fails: what cannot be had is logged and null.
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
  /// Says which subpaths are pages.
  virtual std::optional<Predicate> defaultIncludePredicate() const = 0;
  /// The source's root folder.
  virtual std::optional<URL> baseURL() const = 0;
};

}  // namespace quorvex
