#pragma once

#include <string>
#include <vector>

#include "fulltext/writing/index_writer.h"

namespace quorvex {

/// The sections derived from the places of all documents.
struct PlaceSections {
  std::string places;
  std::string names;
};

/// Leaves out fragments that repeat on most pages and carry neither heading nor name: they belong
/// to the layout of the pages.
PlaceSections encodePlaces(const std::vector<PendingDocument>& documents);

}  // namespace quorvex
