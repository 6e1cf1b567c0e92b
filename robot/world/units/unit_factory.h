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
 * The creators of a virtual robot's units, by sensor type. A value: to add your own types, copy the
 * standard one. Reading is thread-safe.
 */
class QV_API UnitFactory {
 public:
  using Units = std::vector<std::unique_ptr<SensorUnit>>;

  /** Creates one sensor's unit; null for a configuration that lacks what the unit needs. */
  using Creator =
      std::function<std::unique_ptr<SensorUnit>(const Model::SensorConfig&, const UnitContext&)>;
  /**
   * Creates the units of all sensors that share hardware, in the order of their names; also for no
   * sensor. Sonars and cameras have no units: their services call their sources.
   */
  using GroupCreator =
      std::function<Units(const std::vector<Model::SensorConfig>&, const UnitContext&)>;

  /** Creates a factory without types. */
  UnitFactory() = default;
  /** Returns a factory with the types of Model::SensorKinds::standard(). */
  static const UnitFactory& standard();

  /** Throws std::invalid_argument for a known type or an empty creator. */
  void add(int type, Creator creator);
  void addTogether(const std::vector<int>& types, GroupCreator creator);

  bool hasType(int type) const { return groupOfType.count(type) > 0; }

  /**
   * Creates the units in the order in which creators were added. Exceptions of creators reach the
   * caller.
   */
  Units make(const Model::Robot& robot, const UnitContext& context) const;

 private:
  std::map<int, std::size_t> groupOfType;
  std::vector<GroupCreator> groups;
};

}  // namespace QV::robot
