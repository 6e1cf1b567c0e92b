#pragma once

#include <memory>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/transform.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/collision_shape.h"

namespace QV {
class QVBroker;
}

/**
 * Does the robot's own body block a sensor? Load the shapes once; before each reading place their
 * joints and test. All three are thread-safe.
 */
namespace QV::sensor {

/**
 * Replaces `shapes` by those on the forearms, the joints "LElbowRoll" and "RElbowRoll", of the
 * description that the module "QVRobotModel" hands out, in the order of their names. A shape whose
 * kind cannot be tested is left out with a warning. A service that is not there or a malformed
 * description: a standard exception.
 */
QV_API void initCollisionShapesAndJointConfig(
    boost::shared_ptr<QVBroker> broker,
    std::vector<std::shared_ptr<Model::CollisionShape>>& shapes);

/**
 * Returns the present pose of each shape's joint, in the body frame. Throws what the service
 * throws.
 */
QV_API std::vector<Math::Transform> buildTransformsFromCollisionShapes(
    const std::vector<std::shared_ptr<Model::CollisionShape>>& shapes, QVMotionProxy motion);

/**
 * True if a shape meets the cone of `halfAperture` radians that the sensor looks into along its x
 * axis, 1.5 m deep whatever the sensor's range. `jointTransforms` are the shapes' joints, in the
 * frame of `sensorTransform`; too few of them: std::out_of_range. A half aperture of pi/2, and what
 * else the geometry cannot answer: std::invalid_argument.
 */
QV_API bool isSensorFOVObstructed(const Math::Transform& sensorTransform,
                                  const std::vector<std::shared_ptr<Model::CollisionShape>>& shapes,
                                  const std::vector<Math::Transform>& jointTransforms,
                                  float halfAperture);

}  // namespace QV::sensor
