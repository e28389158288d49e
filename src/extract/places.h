#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "extract/node_view.h"
#include "extract/place_marks.h"
#include "platform/textsift.h"

namespace quorvex {

/// Makes the places of a page out of its marks, in document order. Their offsets are still numbers
/// of texts. `title`: of the page.
std::vector<TSPlace> placesOf(std::span<const PlaceMark> marks, std::span<const NodeView> texts,
                              std::string_view title);

}  // namespace quorvex
