#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/description_faults.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** Finds the described sensors that the manager does not have: their families by name. */
std::map<std::string, std::string> findUnbuiltSensors(SessionRobot& robot);

/**
 * Finds what a sensor reads and the robot does not have, and why; empty if there is no such thing.
 */
std::string findMissingInput(SessionRobot& robot, const std::string& sensor);

/**
 * Finds what is hardly meant as it stands, in a description alone and in the limits of its sensors'
 * health.
 */
QV_API std::vector<Model::DescriptionFault> findSlips(const Model::Robot& robot,
                                                      const Model::SensorKinds& kinds);

}  // namespace QV::session
