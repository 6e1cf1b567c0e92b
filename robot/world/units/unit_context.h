#pragma once

#include <random>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/scene/surroundings.h"
#include "robot/world/world_options.h"

namespace QV::robot {

struct UnitParts;

/**
 * The context of a robot's sensor units: the surroundings, the memory and the faults. A
 * VirtualRobot gives it, or a UnitRig for units alone. Copies refer to the same robot. Thread-safe,
 * except addFaultName().
 */
class QV_API UnitContext {
 public:
  ~UnitContext();

  const WorldOptions& getOptions() const;
  Surroundings& getSurroundings() const;

  /** Creates a random number generator from the session's seed. Each name has its own sequence. */
  std::mt19937 makeGenerator(const std::string& source) const;

  /** The faults of the sensor of that name. */
  FaultFinder getFaults(const std::string& sensor) const;
  /** Adds a part of a unit that can fail, besides its sensors. Call it only while units are
   * created. */
  void addFaultName(const std::string& name) const;

  /** Reads or writes a key of the memory. Throws QVError for an unknown key, or for a type that a
   * connected key can't take. */
  QVValue read(const std::string& key) const;
  void write(const std::string& key, const QVValue& value) const;
  /** Sets a key to no number. A key that somebody is connected to keeps its last number. */
  void withdraw(const std::string& key) const;

  void declareEvent(const std::string& event) const;
  void raiseEvent(const std::string& event, const QVValue& value) const;
  bool hasSubscribers(const std::string& event) const;

 private:
  friend struct UnitParts;
  explicit UnitContext(boost::shared_ptr<UnitParts> parts);

  boost::shared_ptr<UnitParts> parts;
};

}  // namespace QV::robot
