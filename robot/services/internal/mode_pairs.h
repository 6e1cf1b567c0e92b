#pragma once

#include <map>
#include <string>

#include "platform/api.h"
#include "platform/model/robot.h"

namespace QV::robot {

/** The operation modes that lasers share: the memory key of each, by its actuator. */
class QV_API ModePairs {
 public:
  ModePairs() = default;
  /** Adds those of a robot's sensors that have both. Throws as add() does. */
  explicit ModePairs(const Model::Robot& robot);

  /**
   * Adds a laser's. Two actuators for one key, or two keys for one actuator: std::invalid_argument
   * that names the laser.
   */
  void add(const std::string& laser, const std::string& actuator, const std::string& key);

  const std::map<std::string, std::string>& getKeys() const { return keys; }

 private:
  std::map<std::string, std::string> keys;
  std::map<std::string, std::string> actuators;
};

}  // namespace QV::robot
