#pragma once

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/range_noise.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * Finds people in the view of a depth camera. While somebody is subscribed to the event
 * "PeoplePerception/PeopleDetected" it is raised with those who are seen, and once more when nobody
 * is any longer: [[seconds, microseconds], [[number, distance, angle about y, about z] of each
 * head], [], [], camera index], in the frame that has the camera's name. For one thread at a time.
 */
class PeopleUnit {
 public:
  /** A camera whose name is that of no frame: std::invalid_argument. */
  PeopleUnit(const Model::SensorConfig& camera, const std::string& cameraName, int cameraIndex,
             const UnitContext& context);

  void report(ko::Clock::time_point now);

 private:
  struct Detection {
    int number;
    float distance;
    float aboutY;
    float aboutZ;
  };
  typedef std::vector<Detection> Detections;

  Detections xFind();
  std::optional<Detection> xDetect(std::size_t person, const Math::Transform& camera,
                                   const People& people);
  void xRaiseNonsense();

  const std::string frame;
  const int cameraIndex;
  const float halfFOV;
  const float maxRange;
  const UnitContext context;
  RangeNoise noise;
  std::mt19937 nonsense;
  FaultChannel<Detections> channel;
  bool toldOfSomebody = false;
};

}  // namespace QV::robot
