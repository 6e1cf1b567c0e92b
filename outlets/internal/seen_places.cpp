#include "outlets/internal/seen_places.h"

#include <algorithm>
#include <iterator>

namespace QV::outlets {

std::vector<Math::Position3D> seenPlacesOf(const session::Marks& marks) {
  std::vector<Math::Position3D> places = marks.hits;
  std::ranges::copy(marks.floor, std::back_inserter(places));
  for (const auto& echo : marks.echoes) {
    std::ranges::copy(positionsOn(echo, kArcPoints), std::back_inserter(places));
  }
  return places;
}

}  // namespace QV::outlets
