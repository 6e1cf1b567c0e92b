#include "outlets/web/internal/robot_outline.h"

#include <cmath>
#include <map>
#include <numbers>
#include <string>
#include <variant>

#include <opencv2/imgproc.hpp>

#include "platform/math/transform.h"

namespace QV::outlets {
namespace {

constexpr int kCorners = 36;

/** The places whose hull is that of a solid, from above. */
class Shadow {
 public:
  void add(const Math::Shape3D& shape, const Math::Transform& at) {
    std::visit([this, &at](const auto& solid) { xAdd(solid, at); }, shape);
  }

  std::vector<Math::Position2D> findHull() const {
    std::vector<cv::Point2f> hull;
    if (!places.empty()) cv::convexHull(places, hull);
    std::vector<Math::Position2D> outline;
    outline.reserve(hull.size());
    for (const cv::Point2f& corner : hull) outline.emplace_back(corner.x, corner.y);
    return outline;
  }

 private:
  void xAdd(const Math::Box& box, const Math::Transform& at) {
    for (int corner = 0; corner < 8; ++corner) {
      const auto half = [corner](int bit, float size) {
        return (corner & bit) != 0 ? 0.5f * size : -0.5f * size;
      };
      xAdd(at * Math::Position3D(half(1, box.size.x), half(2, box.size.y), half(4, box.size.z)));
    }
  }
  void xAdd(const Math::Sphere& sphere, const Math::Transform& at) {
    xAddBall(Math::position3DFromTransform(at), sphere.radius);
  }
  void xAdd(const Math::Cylinder& cylinder, const Math::Transform& at) {
    for (int i = 0; i < kCorners; ++i) {
      const Math::Position2D rim = onCircle(i, cylinder.radius);
      for (const float end : {-0.5f * cylinder.length, 0.5f * cylinder.length}) {
        xAdd(at * Math::Position3D(rim.x, rim.y, end));
      }
    }
  }
  void xAdd(const Math::Capsule& capsule, const Math::Transform& at) {
    for (const float end : {-0.5f * capsule.length, 0.5f * capsule.length}) {
      xAddBall(at * Math::Position3D(0.0f, 0.0f, end), capsule.radius);
    }
  }
  void xAdd(const Math::UnsupportedShape&, const Math::Transform&) {}

  void xAddBall(const Math::Position3D& centre, float radius) {
    for (int i = 0; i < kCorners; ++i) {
      const Math::Position2D rim = onCircle(i, radius);
      xAdd({centre.x + rim.x, centre.y + rim.y, centre.z});
    }
  }
  void xAdd(const Math::Position3D& place) { places.emplace_back(place.x, place.y); }

  static Math::Position2D onCircle(int corner, float radius) {
    const float angle = 2.0f * std::numbers::pi_v<float> * static_cast<float>(corner) / kCorners;
    return {radius * std::cos(angle), radius * std::sin(angle)};
  }

  std::vector<cv::Point2f> places;
};

/** The frames of joints by their names in that of the root link, "" for that itself. */
std::map<std::string, Math::Transform> framesOf(const Model::Robot& robot) {
  std::map<std::string, Math::Transform> links{{robot.rootLink, {}}};
  std::map<std::string, Math::Transform> joints{{"", {}}};
  for (const Model::JointConfig& joint : robot.joints) {
    const Math::Transform frame = links[joint.parentLink] * joint.origin;
    links[joint.childLink] = joints[joint.name] = frame;
  }
  return joints;
}

}  // namespace

std::vector<Math::Position2D> outlineOf(const Model::Robot& robot) {
  const auto frames = framesOf(robot);
  Shadow shadow;
  for (const auto& [name, solid] : robot.collisionShapes) {
    shadow.add(solid->getShape(), frames.at(solid->getParentJoint()) * solid->getTransform());
  }
  return shadow.findHull();
}

}  // namespace QV::outlets
