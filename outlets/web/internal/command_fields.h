#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/faults/fault.h"

namespace QV::outlets {

/** The fields of one command, each as what it has to be; UsageError for one that is not. */
class CommandFields {
 public:
  /** All must outlive it. `command` has all fields that are asked for. */
  CommandFields(const nlohmann::json& command, const std::set<std::string>& sensors,
                const MapShift& shift)
      : command(command), sensors(sensors), shift(shift) {}

  /** UsageError unless a command has these fields beside "op", and no other. */
  static void checkNames(const nlohmann::json& command, const std::vector<std::string>& names);

  std::string sensor() const;
  bool flag(const char* name) const;
  double number(const char* name, double least, double most) const;
  /** "x" and "y" as a position in the map as it is held. */
  Math::Position2D position() const;
  std::string text(const char* name) const;
  bool isNull(const char* name) const { return get(name).is_null(); }
  /** Nothing for null. */
  std::optional<robot::FaultKind> fault(const char* name) const;

 private:
  const nlohmann::json& get(const char* name) const { return command.at(name); }
  float metres(const char* name, double zero) const;
  [[noreturn]] void refuse(const char* name, const std::string& expected) const;

  const nlohmann::json& command;
  const std::set<std::string>& sensors;
  const MapShift& shift;
};

}  // namespace QV::outlets
