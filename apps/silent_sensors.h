#pragma once

#include <set>
#include <string>
#include <vector>

#include "outlets/files/internal/record_output.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::app {

/** The exit status if a sensor gave no record, or the robot did not arrive. */
constexpr int kNotAll = 1;

using SilentSensors = std::vector<outlets::SilentSensor>;

/**
 * Returns the subscribed sensors that gave no record, neither in `heard` nor at the end; also those
 * of the families `asked`, or of all if it is empty, that could not be built. A sound sensor with
 * nothing to report, such as an untouched bumper, is left out.
 */
SilentSensors findSilent(session::Session& session, const std::vector<std::string>& asked,
                         const session::Snapshot& end, const std::set<std::string>& heard = {});

/** Prints each of them on standard error; returns kNotAll if there are any, else 0. */
int reportSilent(const SilentSensors& sensors);

}  // namespace QV::app
