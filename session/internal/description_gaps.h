#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/description_faults.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** By name, the families of described sensors that the manager does not have. */
std::map<std::string, std::string> findUnbuiltSensors(SessionRobot& robot);

/** What a sensor reads and the robot does not have, and why; empty if there is no such thing. */
std::string findMissingInput(SessionRobot& robot, const std::string& sensor);

/** What hardly is as it was meant in a description alone, the limits of its sensors' health, too.
 */
QV_API std::vector<Model::DescriptionFault> findSlips(const Model::Robot& robot,
                                                      const Model::SensorKinds& kinds);

}  // namespace QV::session
