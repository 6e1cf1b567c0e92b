#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/description_faults.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** Finds the described sensors that the manager does not have: their families by name. */
QV_API std::map<std::string, std::string> findUnbuiltSensors(SessionRobot& robot);

/**
 * Finds a memory key that a sensor reads but the robot does not have, with the error; empty if
 * there is none.
 */
std::string findMissingInput(SessionRobot& robot, const std::string& sensor);

/**
 * Finds probable mistakes in a description alone, and in the health limits of its sensors.
 */
QV_API std::vector<Model::DescriptionFault> findSlips(const Model::Robot& robot,
                                                      const Model::SensorKinds& kinds);

}  // namespace QV::session
