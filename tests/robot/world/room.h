#pragma once

#include <boost/make_shared.hpp>

#include "tests/support/walled_map.h"

namespace QV::test {

/** A free room from (0, 0) to (10, 6), its walls one cell of 5 cm thick and in free space. */
inline boost::shared_ptr<OccupancyMap> makeRoom() {
  return boost::make_shared<OccupancyMap>(
      makeWalledMap(202, 122, 0.05f, Math::Pose2D(-0.05f, -0.05f, 0.0f)));
}

}  // namespace QV::test
