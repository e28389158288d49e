#pragma once

#include <string>

#include "common/allowed_kinds.h"
#include "common/cbor.h"
#include "fuzz/driver.h"
#include "platform/beacon/searchable_item.h"

namespace quorvex::fuzz {

/// What an index file may hold.
inline AllowedKinds archiveKinds() {
  AllowedKinds kinds = AllowedKinds::values();
  allowSearchableItems(kinds);
  return kinds;
}

/// The bytes that `archive` makes of a tree.
template <typename Tree>
std::string archived(Status (*archive)(const Tree&, const ByteSink&), const Tree& tree) {
  std::string bytes;
  require(archive(tree, [&](std::string_view piece) {
            bytes += piece;
            return true;
          }).ok());
  return bytes;
}

}  // namespace quorvex::fuzz
