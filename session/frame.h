#pragma once

namespace QV::session {

/** What records place their sensors in. */
enum class Frame { map, robot };

inline const char* getName(Frame frame) {
  return frame == Frame::map ? "map" : "robot";
}

}  // namespace QV::session
