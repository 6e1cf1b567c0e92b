#pragma once

#include <set>
#include <string>
#include <vector>

#include "outlets/files/internal/record_output.h"
#include "session/snapshot.h"

namespace QV::app {

/** The status of a program in which a sensor gave nothing, or the robot did not arrive. */
constexpr int kNotAll = 1;

using SilentSensors = std::vector<outlets::SilentSensor>;

/**
 * The sensors that the program has subscribed to and that gave no record, neither to `heard` nor at
 * the end. One that has nothing to tell, as a bumper that nothing presses, is sound and is left
 * out.
 */
SilentSensors findSilent(const session::Snapshot& end, const std::set<std::string>& heard = {});

/** Says each of them on standard error; kNotAll if there are any, else 0. */
int reportSilent(const SilentSensors& sensors);

}  // namespace QV::app
