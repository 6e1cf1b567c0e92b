#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "outlets/foxglove/internal/foxglove_protocol.h"
#include "sensor/core/sensor_manager.h"

namespace QV::outlets::foxglove {

constexpr std::uint32_t kPose = 1;
constexpr std::uint32_t kMap = 2;
constexpr std::uint32_t kLog = 3;
constexpr std::uint32_t kFirstSensor = 4;

/** The channels that viewers can subscribe to: numbered from 1 without a gap. */
struct Channels {
  std::vector<Channel> all;
  /** The names of the sensors by channel. */
  std::map<std::uint32_t, std::string> sensors;
  /** The channel of where the sensors look. */
  std::uint32_t fields = 0;
  /** The frames of the depth camera; 0 without one. */
  std::uint32_t depth = 0;
};

/** The robot, its map, its log, each sensor of the manager, and the frames of `depthSensor`. */
Channels listChannels(const sensor::SensorManager& manager, const std::string& depthSensor);

}  // namespace QV::outlets::foxglove
