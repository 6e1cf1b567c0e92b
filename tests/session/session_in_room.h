#pragma once

#include "session/open.h"
#include "tests/robot/world/room.h"

namespace QV::test {

/** Opens a session in the room of 10 m by 6 m, at `start`. */
inline session::OpenOptions inRoom(const Math::Pose2D& start) {
  session::OpenOptions options;
  options.map = makeRoom();
  options.start = start;
  return options;
}

}  // namespace QV::test
