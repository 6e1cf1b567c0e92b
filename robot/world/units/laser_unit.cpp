#include "robot/world/units/laser_unit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "robot/services/sensor_types.h"
#include "robot/world/internal/generator.h"
#include "robot/world/units/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr int kModeBits = 0xff;
constexpr float kFalseLaserShare = 0.6f;
// What lies lower than this is no floor to drive on.
constexpr float kFloorTolerance = 0.02f;

bool isHoleLaser(const Model::SensorConfig& config) {
  return config.type == kHoleLaserType;
}

float anyNonsenseCoordinate(std::mt19937& generator) {
  constexpr std::array<float, 5> kNonsense{std::numeric_limits<float>::quiet_NaN(),
                                           std::numeric_limits<float>::infinity(), -1.0f, 1e30f,
                                           0.0f};
  return kNonsense[generator() % kNonsense.size()];
}

}  // namespace

bool LaserUnit::isComplete(const Model::SensorConfig& config) {
  std::vector<const char*> needed{"regIndex", "setOperationMode", "getOperationMode", "timestamp"};
  if (isHoleLaser(config)) needed.insert(needed.end(), {"inclination", "status"});
  return std::none_of(needed.begin(), needed.end(),
                      [&](const char* property) { return textOf(config, property).empty(); });
}

LaserUnit::LaserUnit(const Model::SensorConfig& config, const UnitContext& context)
    : config(config),
      actuatorKey(textOf(config, "setOperationMode")),
      modeKey(textOf(config, "getOperationMode")),
      modeBits(integerOf(config, "regIndex") & kModeBits),
      context(context),
      fan(config, config.memoryKeys.size() / 2, context.surroundings),
      noise(context.options, config.name),
      nonsense(makeGenerator(context.options.seed, config.name + " garbage")),
      channel(
          context.faults, config.name, [this](const Scan& scan) { return xGarble(scan); },
          xFalsify) {
  Scan none;
  const float beyond = fan.getMaxRange() + kNoEchoMargin;
  for (std::size_t i = 0; i < fan.getRayCount(); ++i) {
    const auto& direction = fan.getDirection(i);
    none.coordinates.insert(none.coordinates.end(), {beyond * direction.x, beyond * direction.y});
  }
  xWrite(none, ko::Clock::now());
}

bool LaserUnit::isOff(ko::Clock::time_point now) const {
  return context.faults->find(config.name, now) == FaultKind::off;
}

void LaserUnit::scan(int mode, ko::Clock::time_point now) {
  if ((mode & modeBits) == 0) return;
  std::lock_guard<std::mutex> lock(mutex);
  if (const auto sample = channel.pass(xMeasure(), now)) xWrite(sample->value, sample->time);
}

LaserUnit::Scan LaserUnit::xMeasure() {
  const Moment moment = context.surroundings->getMoment();
  const std::vector<Ray> rays = fan.aim(moment);
  const std::vector<float> ranges = fan.measure(rays, moment);
  Scan scan;
  scan.coordinates.reserve(ranges.size() * 2);
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const float measured = noise.apply(ranges[i]);
    const float range = std::isinf(measured) ? fan.getMaxRange() + kNoEchoMargin : measured;
    scan.coordinates.push_back(range * fan.getDirection(i).x);
    scan.coordinates.push_back(range * fan.getDirection(i).y);
  }
  if (isHoleLaser(config)) scan.status = xJudgeFloor(rays, ranges);
  return scan;
}

int LaserUnit::xJudgeFloor(const std::vector<Ray>& rays, const std::vector<float>& ranges) const {
  float lowest = 0.0f;
  for (std::size_t i = 0; i < rays.size(); ++i) {
    // A ray that gets through the floor without an end went as deep as it reaches.
    lowest = std::min(lowest, rays[i].at(std::min(ranges[i], fan.getMaxRange())).z);
  }
  if (lowest <= -FloorHole::kHoleDepth) return kHole;
  return lowest < -kFloorTolerance ? kStepDown : kSoundFloor;
}

void LaserUnit::xWrite(const Scan& scan, ko::Clock::time_point time) const {
  MemoryService& memory = *context.memory;
  for (std::size_t i = 0; i < scan.coordinates.size(); ++i) {
    memory.insertData(config.memoryKeys[i], scan.coordinates[i]);
  }
  if (isHoleLaser(config)) {
    memory.insertData(textOf(config, "inclination"), scan.error);
    memory.insertData(textOf(config, "status"), scan.status);
  }
  memory.insertData(textOf(config, "timestamp"), ko::Clock::toInt32ms(time));
}

LaserUnit::Scan LaserUnit::xGarble(const Scan& scan) {
  Scan garbled = scan;
  for (float& coordinate : garbled.coordinates) coordinate = anyNonsenseCoordinate(nonsense);
  garbled.error = static_cast<int>(nonsense() % 2);
  garbled.status = static_cast<int>(nonsense() % 100) - 50;
  return garbled;
}

LaserUnit::Scan LaserUnit::xFalsify(const Scan& scan) {
  Scan falsified = scan;
  for (float& coordinate : falsified.coordinates) coordinate *= kFalseLaserShare;
  if (scan.status != 0) falsified.status = scan.status == kSoundFloor ? kHole : kSoundFloor;
  return falsified;
}

}  // namespace QV::robot
