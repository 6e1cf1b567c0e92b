#include "platform/math/pose2d.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace QV::Math {

Pose2D::Pose2D(const std::vector<float>& values) {
  if (values.size() != 3) {
    throw std::invalid_argument("Pose2D: 3 floats (x, y, theta) expected, " +
                                std::to_string(values.size()) + " given");
  }
  x = values[0];
  y = values[1];
  theta = values[2];
}

Placement2D::Placement2D(const Pose2D& pose)
    : x(pose.x), y(pose.y), cosTheta(std::cos(pose.theta)), sinTheta(std::sin(pose.theta)) {}

Position2D operator*(const Pose2D& b, const Position2D& a) {
  return Placement2D(b) * a;
}

Pose2D operator*(const Pose2D& b, const Pose2D& a) {
  const Position2D position = b * position2DFromPose2D(a);
  return {position.x, position.y, b.theta + a.theta};
}

Pose2D pinv(const Pose2D& pose) {
  const float cosTheta = std::cos(pose.theta);
  const float sinTheta = std::sin(pose.theta);
  return {-(cosTheta * pose.x + sinTheta * pose.y), sinTheta * pose.x - cosTheta * pose.y,
          -pose.theta};
}

Position2D position2DFromPose2D(const Pose2D& pose) {
  return {pose.x, pose.y};
}

}  // namespace QV::Math
