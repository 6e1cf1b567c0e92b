#include "robot/world/units/depth_unit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/vision/video_codes.h"
#include "robot/world/internal/generator.h"
#include "robot/world/units/range_noise.h"
#include "robot/world/units/sensor_properties.h"

namespace QV::robot {
namespace {

// Radians; no lens makes a plane of half a turn.
constexpr float kWidestField = 3.0f;
constexpr double kFalseDepthShare = 0.6;
constexpr int kLost = std::numeric_limits<int>::min();
constexpr std::size_t kNoiseCount = 1 << 16;
constexpr float kMillimetresPerMetre = 1000.0f;
// The farthest depth that a reader takes for one, and one that none does.
constexpr std::uint16_t kMostDepth = kMaxDepth;
constexpr std::uint16_t kNoDepth = 65535;

DepthOptics opticsOf(const Model::SensorConfig& config) {
  const auto fieldOf = [&](const char* property) {
    return std::min(angleOf(config, property), kWidestField);
  };
  return {fieldOf("horizontalAngularRange"), fieldOf("verticalAngularRange"),
          numberOf(config, "minimumDetectionDistance"),
          numberOf(config, "maximumDetectionDistance")};
}

// Drawn once: a normal number for each pixel would take longer than the picture.
std::vector<int> drawNoise(const WorldOptions& options, const std::string& sensor) {
  if (options.rangeNoise == 0.0f && options.dropOuts == 0.0f) return {};
  RangeNoise source(options, sensor);
  std::vector<int> noise(kNoiseCount);
  for (int& error : noise) {
    // Far enough from 0 that no error is cut off.
    constexpr float kFar = 1000.0f;
    const float range = source.apply(kFar);
    error = std::isinf(range)
                ? kLost
                : static_cast<int>(std::lround((range - kFar) * kMillimetresPerMetre));
  }
  return noise;
}

}  // namespace

DepthUnit::DepthUnit(const Model::SensorConfig& config, const UnitContext& context)
    : sensor(config.name),
      context(context),
      renderer(context.surroundings->getScene(), opticsOf(config)),
      noiseStart(makeGenerator(context.options.seed, config.name + " frames")),
      nonsense(makeGenerator(context.options.seed, config.name + " garbage")),
      noise(drawNoise(context.options, config.name)),
      channel(
          context.faults, config.name, [this](const Frame& frame) { return xGarble(frame); },
          [](const Frame& frame) { return Frame(frame * kFalseDepthShare); }) {}

void DepthUnit::show(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point& time) {
  const Moment moment = context.surroundings->getMoment();
  Frame frame(depth.size());
  renderer.render(frame, context.surroundings->frameInMap(sensor, moment), moment.people);
  if (!noise.empty()) xAddNoise(frame);
  const auto sample = channel.pass(frame, time);
  depth = sample ? sample->value : Frame();
  if (sample) time = sample->time;
}

void DepthUnit::xAddNoise(Frame& frame) {
  std::size_t next = noiseStart();
  for (std::uint16_t& pixel : frame) {
    const int error = noise[next++ % kNoiseCount];
    if (pixel == 0) continue;
    pixel = error == kLost ? std::uint16_t{0} : cv::saturate_cast<std::uint16_t>(pixel + error);
  }
}

// Depths that no reader takes for one are few: some readers log each.
DepthUnit::Frame DepthUnit::xGarble(const Frame& frame) {
  Frame garbled(frame.size());
  for (std::uint16_t& pixel : garbled) pixel = static_cast<std::uint16_t>(nonsense() % kMostDepth);
  garbled(0, 0) = kNoDepth;
  return garbled;
}

}  // namespace QV::robot
