#pragma once

#include <algorithm>
#include <cmath>
#include <deque>

#include "robot/world/virtual_robot.h"
#include "sensor/real/real_sensor_manager.h"

/** Wanders: straight on while the way is free, else turns. Stands while a laser has no news. */
class ObstacleAvoider {
 public:
  ObstacleAvoider(QV::sensor::SensorManager& manager, QV::robot::VirtualRobot& robot)
      : manager(manager), robot(robot) {
    manager.subscribe("avoider", {"Laser", "Shovel"});
    lasers = manager.getSensorListBySubscriber("avoider").size();
  }
  ~ObstacleAvoider() { manager.unsubscribe("avoider"); }

  /** Takes a turn of the control loop; ten a second. */
  void step() {
    if (!remember()) return robot.setVelocity(0.0f, 0.0f, 0.0f);
    const float gap = findGap();
    if (gap > kNear) turn = 0.0f;
    // A turn keeps its side until it ends; between two walls it would oscillate otherwise.
    if (gap < kNear && turn == 0.0f) turn = isLeftFreer() ? 0.6f : -0.6f;
    robot.setVelocity(turn == 0.0f ? std::min(0.4f, 0.5f * (gap - 0.5f * kNear)) : 0.0f, 0.0f,
                      turn);
  }

 private:
  // Metres: a stop before, half the width of the way, and what is far enough to be forgotten.
  static constexpr float kNear = 0.3f, kHalfWidth = 0.34f, kRadius = 0.26f, kFar = 2.0f;
  static constexpr std::size_t kMemory = 2000;
  static constexpr ko::Duration kOld{300'000'000};

  // The lasers leave gaps between them: what was seen counts until the robot is elsewhere.
  bool remember() {
    here = robot.getOdometry();
    std::size_t fresh = 0;
    for (const auto& record : manager.getMetricalData({"Laser", "Shovel"})) {
      if (QV::Math::age(record, ko::Clock::now()) > kOld) continue;
      ++fresh;
      for (const auto& point : QV::Math::pointsInFrame(record)) {
        if (std::hypot(point.x, point.y) < kFar)
          seen.push_back(here * QV::Math::Position2D(point.x, point.y));
      }
    }
    while (seen.size() > kMemory) seen.pop_front();
    return fresh == lasers;
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

  QV::sensor::SensorManager& manager;
  QV::robot::VirtualRobot& robot;
  QV::Math::Pose2D here;
  std::deque<QV::Math::Position2D> seen;
  std::size_t lasers = 0;
  float turn = 0.0f;
};
