#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::robot {

/** A robot's description: its text, and the model that was read from it. */
struct QV_API RobotDescription {
  /** Reads the text; `kinds` are the possible sensors. Throws as ModelUtils::robotFromXml does. */
  explicit RobotDescription(const std::string& xml,
                            const Model::SensorKinds& kinds = Model::SensorKinds::standard());

  /** Reads a file. Throws std::runtime_error, with the path, if it is malformed or unreadable. */
  static RobotDescription fromFile(
      const std::string& path, const Model::SensorKinds& kinds = Model::SensorKinds::standard());

  std::string xml;
  Model::SensorKinds kinds;
  Model::Robot model;
};

}  // namespace QV::robot
