#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::Model {

/** A likely mistake in a description that is well-formed otherwise. */
struct QV_API DescriptionFault {
  /** Empty for a sensor without a name. */
  std::string sensor;
  /** The text that is there: `property "maximumDetectionDistance" is "300 cm"`. */
  std::string what;
  /** The text that should be there: "metres". */
  std::string expected;

  /** Returns `sensor`, `what` and `expected` as one line. */
  std::string toText() const;
};

/**
 * Returns the likely mistakes, sorted by sensor name: unknown, missing or invalid properties, wrong
 * numbers of memory keys, shared memory keys and unknown type numbers. Misspelt type names follow,
 * and unknown ones of sensors with properties or memory keys.
 */
QV_API std::vector<DescriptionFault> findDescriptionFaults(
    const Robot& robot, const SensorKinds& kinds = SensorKinds::standard());

}  // namespace QV::Model
