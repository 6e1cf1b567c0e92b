#include "robot/world/units/internal/laser_unit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "platform/model/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr int kModeBits = 0xff;
// A surface lower than this is no floor to drive on.
constexpr float kFloorTolerance = 0.02f;

constexpr std::array<float, 5> kFalseCoordinates{std::numeric_limits<float>::quiet_NaN(),
                                                 std::numeric_limits<float>::infinity(), -1.0f,
                                                 1e30f, 0.0f};

}  // namespace

LaserUnit::LaserUnit(const Model::SensorConfig& config, bool isHoleLaser,
                     const UnitContext& context)
    : config(config),
      isHoleLaser(isHoleLaser),
      actuatorKey(Model::SensorProperties(config).getText("setOperationMode")),
      modeKey(Model::SensorProperties(config).getText("getOperationMode")),
      modeBits(Model::SensorProperties(config).getInteger("regIndex") & kModeBits),
      context(context),
      fan(config, config.memoryKeys.size() / 2, context),
      noise(context.getOptions(), config.name),
      faults(context.getFaults(config.name)),
      garbage(context, config.name),
      channel(
          faults, [this](const Scan& scan) { return xMakeGarbage(scan); }, xMakeWrong) {
  Scan none;
  const float beyond = fan.getMaxRange() + kNoEchoMargin;
  for (std::size_t i = 0; i < fan.getRayCount(); ++i) {
    const auto& direction = fan.getDirection(i);
    none.coordinates.insert(none.coordinates.end(), {beyond * direction.x, beyond * direction.y});
  }
  xWrite(none, ko::Clock::now());
}

bool LaserUnit::isOff(ko::Clock::time_point now) const {
  return faults(now) == FaultKind::off;
}

void LaserUnit::scan(int mode, ko::Clock::time_point now) {
  if ((mode & modeBits) == 0) return;
  std::lock_guard<std::mutex> lock(mutex);
  if (const auto sample = channel.pass(xMeasure(), now)) xWrite(sample->value, sample->time);
}

LaserUnit::Scan LaserUnit::xMeasure() {
  const Moment moment = context.getSurroundings().getMoment();
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
  if (isHoleLaser) scan.status = xJudgeFloor(rays, ranges);
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
  const Model::SensorProperties properties(config);
  for (std::size_t i = 0; i < scan.coordinates.size(); ++i) {
    context.write(config.memoryKeys[i], scan.coordinates[i]);
  }
  if (isHoleLaser) {
    context.write(properties.getText("inclination"), scan.error);
    context.write(properties.getText("status"), scan.status);
  }
  context.write(properties.getText("timestamp"), ko::Clock::toInt32ms(time));
}

LaserUnit::Scan LaserUnit::xMakeGarbage(const Scan& scan) {
  Scan result = scan;
  for (float& coordinate : result.coordinates) coordinate = garbage.pick(kFalseCoordinates);
  result.error = static_cast<int>(garbage.below(2));
  result.status = static_cast<int>(garbage.below(100)) - 50;
  return result;
}

LaserUnit::Scan LaserUnit::xMakeWrong(const Scan& scan) {
  Scan result = scan;
  for (float& coordinate : result.coordinates) coordinate *= kFalseShare;
  if (scan.status != 0) result.status = scan.status == kSoundFloor ? kHole : kSoundFloor;
  return result;
}

}  // namespace QV::robot
