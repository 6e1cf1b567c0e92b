#pragma once

#include <cstdint>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"

namespace QV::robot {

/** A solid block that stands or hangs in the map, upright. Metres. */
struct QV_API WorldBox {
  /** The centre and heading in the map. */
  Math::Pose2D pose;
  /** The extent along its own x; the width along its own y. */
  float length = 0.5f;
  float width = 0.5f;
  /** The heights above the floor. */
  float bottom = 0.0f;
  float top = 0.5f;
};

/** A part of the floor that lies lower. Metres. */
struct QV_API FloorHole {
  /** The centre and heading in the map. */
  Math::Pose2D pose;
  /** The extent along its own x; the width along its own y. */
  float length = 0.5f;
  float width = 0.5f;
  /** The depth. Less than kHoleDepth makes a step down, kHoleDepth or more a hole. */
  float depth = 1.0f;

  static constexpr float kHoleDepth = 0.1f;
};

/** A person who walks from waypoint to waypoint and back, and waits where the robot is in the way.
 */
struct QV_API Walker {
  /** The waypoints in the map; with a single one the person stands still. */
  std::vector<Math::Position2D> path;
  /** m/s. */
  float speed = 0.8f;
};

/**
 * The world of a VirtualRobot, and the quality of its sensors. The default is an empty world and
 * perfect sensors.
 *
 * - Frames: all places are in the map.
 * - Units: metres, radians, m/s; durations are nanoseconds.
 * - Errors: the robot's constructor throws std::invalid_argument for values that make no sense.
 *
 * Noisy ranges and three people, the same in every run:
 *
 *     QV::robot::WorldOptions world;
 *     world.start = {3.0f, 6.3f, 0.0f};
 *     world.seed = 7;
 *     world.rangeNoise = 0.01f;
 *     world.randomPeople = 3;
 */
struct QV_API WorldOptions {
  /** The pose of the robot's root link at the start. */
  Math::Pose2D start;
  /** The seed of all random numbers; each random process has its own generator. */
  std::uint64_t seed = 1;

  /** The standard deviation of each measured range, metres. */
  float rangeNoise = 0.0f;
  /** The share of ranges that are lost, 0 to 1. */
  float dropOuts = 0.0f;
  /** The standard deviation of the odometry's systematic error, as a share of each way and turn. */
  float odometryDrift = 0.0f;

  /** The height of occupied cells of the map, metres. */
  float wallHeight = 2.5f;
  std::vector<WorldBox> boxes = {};
  std::vector<FloorHole> holes = {};
  std::vector<Walker> people = {};
  /** The number of further people, who walk at random. */
  int randomPeople = 0;

  /** The time between two steps of the body; it moves and touches in a step. */
  ko::Duration stepPeriod{20'000'000};
  ko::Duration laserPeriod{100'000'000};
  ko::Duration sonarPeriod{100'000'000};
  ko::Duration peoplePeriod{200'000'000};
  /** The time from a laser's command to its first scan. */
  ko::Duration laserStart{60'000'000};
};

}  // namespace QV::robot
