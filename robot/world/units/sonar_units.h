#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/model/robot.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * The sonars of a robot, as the sonar driver asks for them; and the key of one that does not answer
 * holds no number. Safe from any thread.
 */
class SonarUnits {
 public:
  /** Writes the keys of sonars that hear nothing. */
  SonarUnits(const Model::Robot& robot, const UnitContext& context);
  ~SonarUnits();

  /** A SonarDriver::Source. */
  std::optional<float> measure(const std::string& sonar);

 private:
  class Unit;

  const UnitContext context;
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<Unit>> units;
};

}  // namespace QV::robot
