#pragma once

#include <string>

#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"
#include "sensor/core/sensor_manager.h"

namespace QV::session {

/**
 * Finds the kind of a manager's sensor: the kind that it was created for, or else the first of its
 * family in `kinds`. Null for a sensor that casts rays into a map, and for an unknown name.
 */
const Model::SensorKind* findKind(const sensor::SensorManager& manager, const std::string& sensor,
                                  const Model::SensorKinds& kinds);

/**
 * Finds the name of the sensor that was made from a description: its own, or that of the one sensor
 * that stands for all of its kind. Empty if there is none.
 */
std::string findSensorOf(const Model::SensorConfig& config, const Model::SensorKinds& kinds,
                         const sensor::SensorManager& manager);

/** Finds the meaning of its points by its kind; without a kind, that of a simulated sensor, or a
 * scan. */
Model::PointMeaning findMeaning(const sensor::SensorManager& manager, const std::string& sensor,
                                const Model::SensorKind* kind);

}  // namespace QV::session
