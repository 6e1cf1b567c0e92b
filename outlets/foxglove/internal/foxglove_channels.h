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

/** What viewers can subscribe to: numbered from 1 without a gap. */
struct Channels {
  std::vector<Channel> all;
  /** The names of the sensors by channel. */
  std::map<std::uint32_t, std::string> sensors;
};

/** The robot, its map, its log, and each sensor of the manager. */
Channels listChannels(const sensor::SensorManager& manager);

}  // namespace QV::outlets::foxglove
