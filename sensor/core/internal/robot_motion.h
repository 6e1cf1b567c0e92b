#pragma once

#include <atomic>
#include <cstdint>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"

namespace QV::sensor {

/** The total turns and distances of the robot. One thread writes them, any thread reads them. */
class QV_API RobotMotion {
 public:
  /** Notes the velocity: forward, leftward (m/s) and turning (rad/s), in the ground frame. */
  void note(const Math::Pose2D& velocity, ko::Clock::time_point now);

  struct State {
    /** The radians turned to either side, and the metres driven, since the beginning. */
    double turned = 0.0;
    double went = 0.0;
    /** The direction of the motion: of length 1, or 0 for a robot that stands. */
    float directionX = 0.0f;
    float directionY = 0.0f;
    bool isMoving = false;
  };
  State getState() const;

 private:
  std::int64_t notedAt = 0;
  std::atomic<double> turned{0.0};
  std::atomic<double> went{0.0};
  std::atomic<float> directionX{0.0f};
  std::atomic<float> directionY{0.0f};
  std::atomic<bool> isMoving{false};
};

}  // namespace QV::sensor
