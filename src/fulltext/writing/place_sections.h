#pragma once

#include <span>
#include <string>
#include <vector>

#include "fulltext/writing/index_writer.h"
#include "platform/textsift.h"

namespace quorvex {

/// The sections derived from the places of all documents.
struct PlaceSections {
  std::string places;
  std::string names;
};

std::vector<std::size_t> offsetsOf(std::span<const TSPlace> places);

/// Encodes the places of a document until all documents are known. `positions`: the numbers of
/// occurrence codes before them.
std::string packPlaces(std::span<const TSPlace> places, std::span<const std::size_t> positions);

/// Leaves out fragments that repeat on most pages and carry neither heading nor name: they belong
/// to the layout of the pages.
PlaceSections encodePlaces(const std::vector<PendingDocument>& documents);

}  // namespace quorvex
