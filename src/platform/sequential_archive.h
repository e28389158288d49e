#pragma once

#include <string_view>

#include "common/allowed_kinds.h"
#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// The sequential archive: a CBOR sequence (RFC 8742) of one dictionary's entries, each item in the
// form of common/cbor.h, keys in the order of their encoded bytes.
//
//   archive = "QXSequentialArchiver", 1, count: uint, count * (key: tstr, value: tree)

namespace quorvex {

/// Writes the archive to `sink`, piece by piece; fails as archiveKeyed does.
Status archiveSequentially(const Dictionary& root, const ByteSink& sink);

/// The dictionary of an archive; refuses what unarchiveKeyed refuses.
Result<Dictionary> unarchiveSequentially(std::string_view bytes, const AllowedKinds& kinds);

}  // namespace quorvex
