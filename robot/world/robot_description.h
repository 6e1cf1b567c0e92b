#pragma once

#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"

namespace QV::robot {

/** A robot's description, as text and as what the text says. */
struct QV_API RobotDescription {
  /** Malformed XML: what ModelUtils::robotFromXml throws. */
  explicit RobotDescription(const std::string& xml);

  /** std::runtime_error, with the path, for a file that can't be read or is malformed. */
  static RobotDescription fromFile(const std::string& path);

  std::string xml;
  Model::Robot model;
};

}  // namespace QV::robot
