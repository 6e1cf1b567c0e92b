#include "robot/world/scene/surroundings.h"

namespace QV::robot {

Surroundings::Surroundings(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                           boost::shared_ptr<MotionService> motion)
    : scene(std::move(map), options), motion(std::move(motion)) {}

void Surroundings::setMoment(const Moment& newMoment) {
  std::lock_guard<std::mutex> lock(mutex);
  moment = newMoment;
}

Moment Surroundings::getMoment() const {
  std::lock_guard<std::mutex> lock(mutex);
  return moment;
}

Math::Transform Surroundings::frameInMap(const std::string& name, const Moment& at) const {
  return Math::transformFromPose2D(at.robot) * frameInGround(name);
}

Math::Transform Surroundings::frameInGround(const std::string& name) const {
  return motion->getTransform(name, MotionService::kGroundFrame, true);
}

}  // namespace QV::robot
