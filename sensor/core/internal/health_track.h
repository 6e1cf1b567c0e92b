#pragma once

#include <cstdint>
#include <string>

#include "platform/api.h"
#include "sensor/core/internal/robot_motion.h"
#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {

/** The history of a sensor, where its last notes don't suffice. */
struct QV_API HealthTrack {
  /** The robot's motion while the points stayed the same: radians, and metres towards an
   * obstacle. */
  double turned = 0.0;
  double went = 0.0;
  /** The sensor that it contradicts, and for how long on the move; what both say, metres. */
  const std::string* contradicted = nullptr;
  double contradiction = 0.0;
  double own = 0.0;
  double others = 0.0;

  /** Tells how far the robot has moved since a sensor's points changed. */
  void update(const ReadingNotes& notes, bool showsMotion, const RobotMotion::State& moved);

 private:
  std::int64_t startedAt = 0;
  std::uint32_t stamps = 0;
  std::uint32_t changes = 0;
  double turnedBefore = 0.0;
  double wentBefore = 0.0;
};

}  // namespace QV::sensor
