#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "robot/services/video_device.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/internal/depth_renderer.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

/** A depth camera of the robot. Its frames are rendered when they are asked for. */
class DepthSource {
 public:
  DepthSource(const Model::SensorConfig& config, const UnitContext& context);

  /** A FrameSource; for one thread at a time. */
  void show(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point& time);

 private:
  using Frame = cv::Mat_<std::uint16_t>;

  void xAddNoise(Frame& frame);
  Frame xMakeGarbage(const Frame& frame);

  const std::string sensor;
  const UnitContext context;
  DepthRenderer renderer;
  std::mt19937 noiseStart;
  Garbage garbage;
  /** Errors in millimetres, and kLost. */
  std::vector<int> noise;
  FaultChannel<Frame> channel;
};

/**
 * The video device says when they measure; what looks for people in the view of the first one, the
 * one that sensors ask for, is a unit.
 */
UnitFactory::Units plugInCameras(const std::vector<Model::SensorConfig>& configs,
                                 const UnitContext& context);

}  // namespace QV::robot
