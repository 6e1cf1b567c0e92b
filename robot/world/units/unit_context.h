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
 * The context of a robot's sensor units: what they measure, where they write, and what ails them. A
 * VirtualRobot gives it, and a UnitRig for units alone. Copies are of the same robot. Thread-safe,
 * but for addFaultName().
 */
class QV_API UnitContext {
 public:
  ~UnitContext();

  const WorldOptions& getOptions() const;
  Surroundings& getSurroundings() const;

  /** Makes a source of chance of the session's seed; sources of different names differ. */
  std::mt19937 makeGenerator(const std::string& source) const;

  /** The faults of the sensor of that name. */
  FaultFinder getFaults(const std::string& sensor) const;
  /** Adds a part of a unit that may fail, beside its sensors. Call it only while units are made. */
  void addFaultName(const std::string& name) const;

  /** Reads or writes a key of the memory. A key that is not there, or a type that a connected
   * key can't take: QVError. */
  QVValue read(const std::string& key) const;
  void write(const std::string& key, const QVValue& value) const;
  /** Leaves no number in a key; one that somebody is connected to keeps its last. */
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
