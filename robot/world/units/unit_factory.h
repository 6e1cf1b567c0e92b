#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "platform/api.h"
#include "platform/model/robot.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * The makers of what measures on a virtual robot, by the type of sensor. A value: who knows more
 * kinds copies the standard one and adds his. Reading is thread-safe.
 */
class QV_API UnitFactory {
 public:
  using Units = std::vector<std::unique_ptr<SensorUnit>>;

  /** Makes one sensor's unit; null for a configuration that is too poor to measure with. */
  using Creator =
      std::function<std::unique_ptr<SensorUnit>(const Model::SensorConfig&, const UnitContext&)>;
  /**
   * Makes the units of all sensors that share hardware, in the order of their names; also of none.
   * Sonars and cameras are no units: their services ask them to measure, so they plug in there.
   */
  using GroupCreator =
      std::function<Units(const std::vector<Model::SensorConfig>&, const UnitContext&)>;

  /** Knows no type. */
  UnitFactory() = default;
  /** Knows the types of Model::SensorKinds::standard(). */
  static const UnitFactory& standard();

  /** A type that is known already, or an empty creator: std::invalid_argument. */
  void add(int type, Creator creator);
  void addTogether(const std::vector<int>& types, GroupCreator creator);

  bool hasType(int type) const { return groupOfType.count(type) > 0; }

  /**
   * Makes the units in the order in which creators were added. What a creator throws is passed on.
   */
  Units make(const Model::Robot& robot, const UnitContext& context) const;

 private:
  std::map<int, std::size_t> groupOfType;
  std::vector<GroupCreator> groups;
};

}  // namespace QV::robot
