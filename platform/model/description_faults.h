#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::Model {

/** Something in a description that can be read, but hardly as it was meant. */
struct QV_API DescriptionFault {
  /** Empty for a sensor without a name. */
  std::string sensor;
  /** The text that is there: `property "maximumDetectionDistance" is "300 cm"`. */
  std::string what;
  /** The text that should be there: "metres". */
  std::string expected;

  /** The sensor, what and expected, as a line. */
  std::string toText() const;
};

/**
 * The sensors' slips, in the order of their names: properties that are unknown, missing, no number
 * or beyond their limits, a wrong number of memory keys, two sensors on one memory key, a number
 * that is no kind's; then types that are nearly the name of a kind, and words that are none where
 * the sensor has properties or memory keys.
 */
QV_API std::vector<DescriptionFault> findDescriptionFaults(
    const Robot& robot, const SensorKinds& kinds = SensorKinds::standard());

}  // namespace QV::Model
