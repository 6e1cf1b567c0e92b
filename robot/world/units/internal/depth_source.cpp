#include "robot/world/units/internal/depth_source.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/make_shared.hpp>

#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/units/internal/people_unit.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {
namespace {

// Radians; no lens makes a plane of half a turn.
constexpr float kWidestField = 3.0f;
constexpr int kLost = std::numeric_limits<int>::min();
constexpr std::size_t kNoiseCount = 1 << 16;
constexpr float kMillimetresPerMetre = 1000.0f;
// The farthest depth that a reader takes for one, and one that none does.
constexpr std::uint16_t kMostDepth = kMaxDepth;
constexpr std::uint16_t kNoDepth = 65535;

DepthOptics opticsOf(const Model::SensorConfig& config) {
  const Model::SensorProperties properties(config);
  const auto fieldOf = [&properties](const char* name) {
    return std::min(properties.getAngle(name), kWidestField);
  };
  return {fieldOf("horizontalAngularRange"), fieldOf("verticalAngularRange"),
          properties.getFinite("minimumDetectionDistance"),
          properties.getFinite("maximumDetectionDistance")};
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

Camera makeCamera(const Model::SensorConfig& config, int index, const UnitContext& context) {
  const Model::SensorProperties properties(config);
  const std::string name = properties.getText("cameraName");
  const auto source = boost::make_shared<DepthSource>(config, context);
  return {index,
          name.empty() ? config.name : name,
          properties.getInteger("modelCode"),
          properties.getAngle("horizontalAngularRange"),
          properties.getAngle("verticalAngularRange"),
          [source](auto& depth, auto& time) { source->show(depth, time); }};
}

}  // namespace

DepthSource::DepthSource(const Model::SensorConfig& config, const UnitContext& context)
    : sensor(config.name),
      context(context),
      renderer(UnitParts::of(context).getScene(), opticsOf(config)),
      noiseStart(context.makeGenerator(config.name + " frames")),
      garbage(context, config.name),
      noise(drawNoise(context.getOptions(), config.name)),
      channel(
          context.getFaults(config.name),
          [this](const Frame& frame) { return xMakeGarbage(frame); },
          [](const Frame& frame) { return Frame(frame * kFalseShare); }) {}

void DepthSource::show(cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point& time) {
  const Moment moment = context.getSurroundings().getMoment();
  Frame frame(depth.size());
  renderer.render(frame, context.getSurroundings().frameInMap(sensor, moment), moment.people);
  if (!noise.empty()) xAddNoise(frame);
  const auto sample = channel.pass(frame, time);
  depth = sample ? sample->value : Frame();
  if (sample) time = sample->time;
}

void DepthSource::xAddNoise(Frame& frame) {
  std::size_t next = noiseStart();
  for (std::uint16_t& pixel : frame) {
    const int error = noise[next++ % kNoiseCount];
    if (pixel == 0) continue;
    pixel = error == kLost ? std::uint16_t{0} : cv::saturate_cast<std::uint16_t>(pixel + error);
  }
}

// Depths that no reader takes for one are few: some readers log each.
DepthSource::Frame DepthSource::xMakeGarbage(const Frame& frame) {
  Frame result(frame.size());
  for (std::uint16_t& pixel : result) pixel = static_cast<std::uint16_t>(garbage.below(kMostDepth));
  result(0, 0) = kNoDepth;
  return result;
}

UnitFactory::Units plugInCameras(const std::vector<Model::SensorConfig>& configs,
                                 const UnitContext& context) {
  UnitFactory::Units units;
  int index = kDepthCamera;
  for (const Model::SensorConfig& config : configs) {
    const Camera camera = makeCamera(config, index++, context);
    UnitParts::servicesOf(context).cameras->addCamera(camera);
    if (!units.empty()) continue;
    units.push_back(std::make_unique<PeopleUnit>(config, camera.name, camera.index, context));
  }
  return units;
}

}  // namespace QV::robot
