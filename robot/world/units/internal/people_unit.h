#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/model/sensor_config.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * Finds people in the view of a depth camera. While somebody is subscribed to the event
 * "PeoplePerception/PeopleDetected" it is raised with those who are seen, and once more when nobody
 * is any longer: [[seconds, microseconds], [[number, distance, angle about y, about z] of each
 * head], [], [], camera index], in the frame that has the camera's name.
 */
class PeopleUnit : public SensorUnit {
 public:
  /** A camera whose name is that of no frame: std::invalid_argument. */
  PeopleUnit(const Model::SensorConfig& camera, const std::string& cameraName, int cameraIndex,
             const UnitContext& context);

  void measure(ko::Clock::time_point now) override;

 private:
  struct Detection {
    int number;
    float range;
    float aboutY;
    float aboutZ;
  };
  using Detections = std::vector<Detection>;

  Detections xFind();
  std::optional<Detection> xDetect(std::size_t person, const Math::Transform& camera,
                                   const Moment& moment);
  void xRaiseGarbage();

  const std::string frame;
  const int cameraIndex;
  const float halfFOV;
  const float maxRange;
  const UnitContext context;
  RangeNoise noise;
  const FaultFinder faults;
  Garbage garbage;
  FaultChannel<Detections> channel;
  bool toldOfSomebody = false;
};

}  // namespace QV::robot
