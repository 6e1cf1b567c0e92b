#include "robot/world/scene/surroundings.h"

#include <utility>

#include "robot/services/internal/motion_service.h"
#include "robot/world/scene/internal/scene.h"

namespace QV::robot {

Surroundings::Surroundings(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                           boost::shared_ptr<MotionService> motion)
    : scene(std::make_unique<const Scene>(std::move(map), options)), motion(std::move(motion)) {}

Surroundings::~Surroundings() = default;

const OccupancyMap& Surroundings::getMap() const {
  return scene->getMap();
}

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

float Surroundings::castRay(const Ray& ray, float reach, const Moment& at) const {
  return scene->castRay(ray, reach, at.people);
}

void Surroundings::setTouched(const std::set<std::string>& links) {
  std::lock_guard<std::mutex> lock(mutex);
  touched = links;
}

std::set<std::string> Surroundings::getTouched() const {
  std::lock_guard<std::mutex> lock(mutex);
  return touched;
}

}  // namespace QV::robot
