#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::robot {

/** A robot's description, as text and as what the text says. */
struct QV_API RobotDescription {
  /** `kinds` are those of its sensors. Malformed XML: what ModelUtils::robotFromXml throws. */
  explicit RobotDescription(const std::string& xml,
                            const Model::SensorKinds& kinds = Model::SensorKinds::standard());

  /** std::runtime_error, with the path, for a file that can't be read or is malformed. */
  static RobotDescription fromFile(
      const std::string& path, const Model::SensorKinds& kinds = Model::SensorKinds::standard());

  std::string xml;
  Model::SensorKinds kinds;
  Model::Robot model;
};

}  // namespace QV::robot
