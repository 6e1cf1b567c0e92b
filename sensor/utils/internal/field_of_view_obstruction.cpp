#include "sensor/utils/internal/field_of_view_obstruction.h"

#include <cstddef>
#include <exception>
#include <string>

#include "platform/ko/log.h"
#include "platform/math/internal/is_intersection_cone_shape.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/robot_model_contract.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/model_utils.h"

namespace QV::sensor {
namespace {

constexpr float kConeLength = 1.5f;

// The parts that move in front of the sensors: the rest of the body was kept out of their view.
bool isForearm(const std::string& joint) {
  return joint == "LElbowRoll" || joint == "RElbowRoll";
}

// Any cone will do: only whether there is an answer matters.
bool canBeTested(const Model::CollisionShape& shape) {
  try {
    Math::isIntersectionConeShape({}, {1.0f, 0.0f, 0.0f}, 0.1f, shape.getShape(), {}, 0.1f);
    return true;
  } catch (const std::exception& exception) {
    ko::log::warning("SensorUtils", "initCollisionShapesAndJointConfig")
        << "Ignoring " << shape.getName() << ": " << exception.what();
    return false;
  }
}

}  // namespace

void initCollisionShapesAndJointConfig(
    boost::shared_ptr<QVBroker> broker,
    std::vector<std::shared_ptr<Model::CollisionShape>>& shapes) {
  shapes.clear();
  if (!broker) throw QVError("SensorUtils", "initCollisionShapesAndJointConfig", "no broker given");
  const auto xml = broker->getProxy(RobotModelContract::kModule, 0)
                       ->call<std::string>(RobotModelContract::kGetConfig);
  const Model::Robot robot = Model::ModelUtils::robotFromXml(xml);
  for (const auto& [name, shape] : robot.collisionShapes) {
    if (isForearm(shape->getParentJoint()) && canBeTested(*shape)) shapes.push_back(shape);
  }
}

std::vector<Math::Transform> buildTransformsFromCollisionShapes(
    const std::vector<std::shared_ptr<Model::CollisionShape>>& shapes, QVMotionProxy motion) {
  std::vector<Math::Transform> transforms;
  transforms.reserve(shapes.size());
  for (const auto& shape : shapes) {
    transforms.emplace_back(
        motion.getTransform(shape->getParentJoint(), MotionContract::kBodyFrame, true));
  }
  return transforms;
}

bool isSensorFOVObstructed(const Math::Transform& sensorTransform,
                           const std::vector<std::shared_ptr<Model::CollisionShape>>& shapes,
                           const std::vector<Math::Transform>& jointTransforms,
                           float halfAperture) {
  const Math::Position3D apex = position3DFromTransform(sensorTransform);
  const Math::Position3D axis(sensorTransform(0, 0), sensorTransform(1, 0), sensorTransform(2, 0));
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    const Math::Transform placement = jointTransforms.at(i) * shapes[i]->getTransform();
    if (Math::isIntersectionConeShape(apex, axis, halfAperture, shapes[i]->getShape(), placement,
                                      kConeLength)) {
      return true;
    }
  }
  return false;
}

}  // namespace QV::sensor
