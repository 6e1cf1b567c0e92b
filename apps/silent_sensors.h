#pragma once

#include <set>
#include <string>
#include <vector>

#include "outlets/files/internal/record_output.h"
#include "platform/model/sensor_kinds.h"
#include "session/snapshot.h"

namespace QV::app {

/** What the program ends with if a sensor gave nothing, or the robot did not arrive. */
constexpr int kNotAll = 1;

using SilentSensors = std::vector<outlets::SilentSensor>;

/**
 * The sensors that the program has subscribed to and that gave no record, though they should have:
 * those not in `heard` that have none at the end, either. One that may be silent, as a bumper that
 * nothing presses, counts if its health is at fault.
 */
SilentSensors findSilent(const session::Snapshot& end, const Model::SensorKinds& kinds,
                         const std::set<std::string>& heard = {});

/** Says each of them on standard error; kNotAll if there are any, else 0. */
int reportSilent(const SilentSensors& sensors);

}  // namespace QV::app
