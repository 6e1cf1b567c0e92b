#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "robot/services/video_device.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/depth_renderer.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/** A depth camera of the robot. Its frames are rendered when they are asked for. */
class DepthUnit {
 public:
  DepthUnit(const Model::SensorConfig& config, const UnitContext& context);

  /** A FrameSource; for one thread at a time. */
  void show(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point& time);

 private:
  typedef cv::Mat_<std::uint16_t> Frame;

  void xAddNoise(Frame& frame);
  Frame xGarble(const Frame& frame);

  const std::string sensor;
  const UnitContext context;
  DepthRenderer renderer;
  std::mt19937 noiseStart;
  std::mt19937 nonsense;
  /** Errors in millimetres, and kLost. */
  std::vector<int> noise;
  FaultChannel<Frame> channel;
};

}  // namespace QV::robot
