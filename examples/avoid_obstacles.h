#pragma once

#include <algorithm>
#include <cmath>
#include <deque>

#include "robot/world/embedded_robot.h"
#include "sensor/real/real_sensor_manager.h"

/** Wanders about: straight on while the way is free, else a turn on the spot until it is. */
class ObstacleAvoider {
 public:
  ObstacleAvoider(QV::sensor::SensorManager& manager, QV::robot::EmbeddedRobot& robot)
      : manager(manager), robot(robot) {
    manager.subscribe("avoider", {"Laser", "Shovel"});
  }
  ~ObstacleAvoider() { manager.unsubscribe("avoider"); }

  /** One turn of the control loop; ten a second. */
  void step() {
    remember();
    const float gap = findGap();
    if (gap > kNear) turn = 0.0f;
    // Once begun, a turn keeps its side: two walls would make it dither.
    if (gap < kNear && turn == 0.0f) turn = isLeftFreer() ? 0.6f : -0.6f;
    robot.setVelocity(turn == 0.0f ? std::min(0.4f, 0.5f * (gap - 0.5f * kNear)) : 0.0f, 0.0f,
                      turn);
  }

 private:
  // Metres: a stop before, half the width of the way, and what is far enough to be forgotten.
  static constexpr float kNear = 0.3f;
  static constexpr float kHalfWidth = 0.34f;
  static constexpr float kRadius = 0.26f;
  static constexpr float kFar = 2.0f;
  static constexpr std::size_t kMemory = 2000;

  // The lasers leave gaps between them: what was seen counts until the robot is elsewhere.
  void remember() {
    here = robot.getOdometry();
    for (const auto& record : manager.getMetricalData({"Laser", "Shovel"})) {
      for (const auto& point : QV::Math::pointsInFrame(record)) {
        if (std::hypot(point.x, point.y) < kFar) seen.push_back(here * flat(point));
      }
    }
    while (seen.size() > kMemory) seen.pop_front();
  }

  /** Metres that are free before the robot's rim. */
  float findGap() const {
    float gap = kFar;
    for (const auto& point : seen) {
      const auto ahead = QV::Math::pinv(here) * point;
      if (ahead.x > 0.0f && std::abs(ahead.y) < kHalfWidth) gap = std::min(gap, ahead.x - kRadius);
    }
    return gap;
  }

  bool isLeftFreer() const {
    float left = 0.0f;
    for (const auto& point : seen) {
      const auto ahead = QV::Math::pinv(here) * point;
      if (ahead.x > 0.0f) left += ahead.y > 0.0f ? -1.0f : 1.0f;
    }
    return left > 0.0f;
  }

  static QV::Math::Position2D flat(const QV::Math::Position3D& p) { return {p.x, p.y}; }

  QV::sensor::SensorManager& manager;
  QV::robot::EmbeddedRobot& robot;
  QV::Math::Pose2D here;
  std::deque<QV::Math::Position2D> seen;
  float turn = 0.0f;
};
