#pragma once

#include <mutex>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/math/transform.h"
#include "robot/services/motion_service.h"
#include "robot/world/scene/scene.h"

namespace QV::robot {

/** Where everything that moves is, at one time. */
struct Moment {
  Math::Pose2D robot;
  People people;
};

/** What the robot's sensors have around them now. Safe from any thread. */
class Surroundings {
 public:
  Surroundings(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
               boost::shared_ptr<MotionService> motion);

  const Scene& getScene() const { return scene; }

  void setMoment(const Moment& moment);
  Moment getMoment() const;

  /** The frame of a sensor, joint or link in the map; an unknown name: std::invalid_argument. */
  Math::Transform frameInMap(const std::string& name, const Moment& moment) const;
  /** The same seen from the ground beneath the robot. */
  Math::Transform frameInGround(const std::string& name) const;

 private:
  const Scene scene;
  const boost::shared_ptr<MotionService> motion;
  mutable std::mutex mutex;
  Moment moment;
};

}  // namespace QV::robot
