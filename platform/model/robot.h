#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/collision_shape.h"
#include "platform/model/joint_config.h"
#include "platform/model/sensor_config.h"

namespace QV::Model {

/** A sensor whose type names no known kind. It is left to another tool. */
struct QV_API ForeignSensor {
  /** Empty if it has none. */
  std::string name;
  std::string type;
  /** True if it has properties or memory keys, so it was probably meant for this library. */
  bool hasOurParts = false;

  friend bool operator==(const ForeignSensor&, const ForeignSensor&) = default;
};

/** A robot, as read from its description. */
struct QV_API Robot {
  std::string name;
  /** The kind of robot; 0 when the description names none. */
  int kindCode = 0;
  /** The root link: the only one without a parent joint. */
  std::string rootLink;
  /** The link whose frame is the body frame; the root when the description names none. */
  std::string bodyLink;
  /** The links in the order of the document. */
  std::vector<std::string> links;
  /** The joints, parents before children. */
  std::vector<JointConfig> joints;
  /** The sensors by name. */
  std::map<std::string, SensorConfig> sensorConfigs;
  /** The collision shapes by name, unsupported ones too. */
  std::map<std::string, std::shared_ptr<CollisionShape>> collisionShapes;
  /**
   * The sensors of other tools, in the order of the document. Sensors without a type are not
   * listed.
   */
  std::vector<ForeignSensor> foreignSensors;
};

}  // namespace QV::Model
