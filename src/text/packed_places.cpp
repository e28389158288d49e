#include "common/bytes.h"
#include "platform/textsift.h"

namespace quorvex {

TSPlaces TSPlacesCreate(std::span<const TSPlace> places) {
  TSPlaces packed;
  packed.offsets.reserve(places.size());
  std::string& out = packed.entries;
  for (const TSPlace& place : places) {
    packed.offsets.push_back(static_cast<std::uint32_t>(place.offset));
    out += static_cast<char>(place.level);
    appendText(out, place.fragment);
    appendText(out, place.heading);
    appendVarint(out, place.names.size());
    for (const TSName& name : place.names) {
      out += static_cast<char>(name.kind);
      appendText(out, name.text);
    }
  }
  out.shrink_to_fit();
  return packed;
}

}  // namespace quorvex
