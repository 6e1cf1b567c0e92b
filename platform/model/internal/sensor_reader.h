#pragma once

#include <cstddef>

#include "platform/model/internal/xml_reader.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"

namespace QV::Model::detail {

/** Reads the sensors under `<robot>` into a robot whose links and body are known. */
class SensorReader {
 public:
  /** All of these must outlive the reader. */
  SensorReader(const SensorKinds& kinds, const LinkElements& links, Robot& robot)
      : kinds(kinds), links(links), robot(robot) {}

  void read(const XMLElement& root);

 private:
  bool xIsOurs(const XMLElement& sensor) const;
  int xReadType(const XMLElement& sensor) const;
  void xReadSensor(const XMLElement& element);
  void xReadPart(const XMLElement& element, SensorConfig& config);
  void xReadProperty(const XMLElement& element, SensorConfig& config) const;
  void xReadKeys(const XMLElement& element, SensorConfig& config);

  const SensorKinds& kinds;
  const LinkElements& links;
  Robot& robot;
  // The number of memory keys that patterns may still add.
  std::size_t keysLeft = 100'000;
};

}  // namespace QV::Model::detail
