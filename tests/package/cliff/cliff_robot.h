#pragma once

#include <memory>

#include <boost/make_shared.hpp>

#include "cliff_kind.h"
#include "cliff_sensor.h"
#include "cliff_unit.h"
#include "session/open.h"

inline const QV::Math::Pose2D kOnTheFloor(3.0f, 6.3f, 0.0f);

/** Robots that may have cliff detectors, in front of a hole of a square metre. */
inline QV::session::OpenOptions cliffRobot() {
  using namespace QV;
  session::OpenOptions options;
  options.sensors.add(
      cliffKind(), [](const sensor::SensorOrder& order) -> sensor::SensorFactory::Sensors {
        return {boost::make_shared<CliffSensor>(order.config.name, order.kind.family,
                                                order.fieldOfView, order.config.memoryKeys,
                                                order.broker)};
      });
  options.units.add(kCliffType, [](const auto& config, const auto& context) {
    return std::make_unique<CliffUnit>(config, context);
  });
  options.start = kOnTheFloor;
  options.world.holes = {{{4.2f, 6.3f, 0.0f}, 1.0f, 1.0f, 0.5f}};
  return options;
}
