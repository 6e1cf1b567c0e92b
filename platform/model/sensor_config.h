#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/math/transform.h"

namespace QV::Model {

/** A sensor of a robot description. */
struct QV_API SensorConfig {
  std::string name;
  /** The link that carries it. */
  std::string parentLink;
  /** The number of its kind. A name in the description is turned into the number. */
  int type = 0;
  /** The pose of the sensor's frame in the frame of its link (m, rad). */
  Math::Transform origin;
  /** The properties as written; those that are numbers are read with atofC. */
  std::map<std::string, std::string> properties;
  std::vector<std::string> memoryKeys;

  friend bool operator==(const SensorConfig&, const SensorConfig&) = default;
};

}  // namespace QV::Model
