#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/math/transform.h"

namespace QV::Model {

/** What a robot description says about one sensor. */
struct QV_API SensorConfig {
  std::string name;
  /** The link that carries it. */
  std::string parentLink;
  /** The number of its kind, also where the description has the name. */
  int type = 0;
  /** The sensor's frame in that of its link. */
  Math::Transform origin;
  /** As written; those that are numbers are read with atofC. */
  std::map<std::string, std::string> properties;
  std::vector<std::string> memoryKeys;

  friend bool operator==(const SensorConfig&, const SensorConfig&) = default;
};

}  // namespace QV::Model
