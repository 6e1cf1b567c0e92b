#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/math/pose2d.h"

namespace QV::app {

/** A sensor at one moment. */
struct WatchedSensor {
  std::string name;
  std::string family;
  bool enabled = true;
  bool diagnosis = true;
  bool started = false;
  std::size_t subscribers = 0;
  std::size_t points = 0;
  /** Metres. */
  std::optional<float> nearest = std::nullopt;
  /** Of its oldest record, seconds. */
  std::optional<double> age = std::nullopt;
  /** The last one, and how long ago it was, in seconds. */
  std::string trouble = {};
  double troubleAge = 0.0;
};

/** What a watch shows. */
struct WatchState {
  std::string title;
  Math::Pose2D pose;
  std::vector<WatchedSensor> sensors;
  /** Index of the sensor that keys mean. */
  std::size_t chosen = 0;
  /** What came of the last key. */
  std::string note;
};

}  // namespace QV::app
