#pragma once

namespace QV::app {

/** What records place their sensors in. */
enum class Frame { map, robot };

inline const char* getName(Frame frame) {
  return frame == Frame::map ? "map" : "robot";
}

}  // namespace QV::app
