#pragma once

#include "common/cbor.h"
#include "common/result.h"
#include "common/value.h"

// The sequential archive: a CBOR sequence (RFC 8742) of one dictionary's entries, each item in the
// form of common/cbor.h, keys ordered by their encoded bytes.
//
//   archive = "QXSequentialArchiver", 1, count: uint, count * (key: tstr, value: tree)

namespace quorvex {

/// Writes the archive to `sink` in pieces; fails like archiveKeyed.
Status archiveSequentially(const Dictionary& root, const ByteSink& sink);

}  // namespace quorvex
