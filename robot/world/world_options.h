#pragma once

#include <cstdint>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"

namespace QV::robot {

/** A solid block in the map, upright. Metres. */
struct QV_API WorldBox {
  /** Its centre and heading in the map. */
  Math::Pose2D pose;
  /** Along its own x and y. */
  float length = 0.5f;
  float width = 0.5f;
  /** Above the floor. */
  float bottom = 0.0f;
  float top = 0.5f;
};

/** A part of the floor that lies lower. Metres. */
struct QV_API FloorHole {
  /** Its centre and heading in the map. */
  Math::Pose2D pose;
  /** Along its own x and y. */
  float length = 0.5f;
  float width = 0.5f;
  /** A step down below kHoleDepth, a hole from there on. */
  float depth = 1.0f;

  static constexpr float kHoleDepth = 0.1f;
};

/** Somebody who walks from waypoint to waypoint and back, and waits where the robot is in the way.
 */
struct QV_API Walker {
  /** In the map; one alone stands still. */
  std::vector<Math::Position2D> path;
  /** m/s. */
  float speed = 0.8f;
};

/** The world of a VirtualRobot, and how well its sensors measure. Default: an empty, perfect one.
 */
struct QV_API WorldOptions {
  /** Of the robot's root link in the map. */
  Math::Pose2D start;
  /** Of all that is random; each source of chance has a generator of its own. */
  std::uint64_t seed = 1;

  /** Standard deviation of each measured range, metres. */
  float rangeNoise = 0.0f;
  /** The share of ranges that are lost, 0 to 1. */
  float dropOuts = 0.0f;
  /** Standard deviation of the odometry's systematic error: the share of each way and turn. */
  float odometryDrift = 0.0f;

  /** How high what is occupied in the map stands, metres. */
  float wallHeight = 2.5f;
  std::vector<WorldBox> boxes = {};
  std::vector<FloorHole> holes = {};
  std::vector<Walker> people = {};
  /** People beside those above, who walk about at random. */
  int randomPeople = 0;

  /** The body moves, and touches, once a period. */
  ko::Duration stepPeriod{20'000'000};
  ko::Duration laserPeriod{100'000'000};
  ko::Duration sonarPeriod{100'000'000};
  ko::Duration peoplePeriod{200'000'000};
  /** From a laser's command to its first scan. */
  ko::Duration laserStart{60'000'000};
};

}  // namespace QV::robot
