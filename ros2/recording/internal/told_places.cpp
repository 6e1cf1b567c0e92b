// Which frames messages may be in, and people's way from theirs to the camera's.
#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/vision/qv_image.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/message_checks.h"
#include "ros2/recording/internal/sensor_sorts.h"
#include "ros2/recording/internal/told_modules.h"

namespace QV::ros2 {
namespace {

/** A sensor in another place measures other things (m, rad). */
constexpr float kSamePlace = 0.1f;
constexpr float kSameDirection = 0.2f;

/** The turn from one to the other, about whichever axis; radians. */
float angleBetween(const Math::Transform& a, const Math::Transform& b) {
  float trace = 0.0f;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) trace += a(row, column) * b(row, column);
  return std::acos(std::clamp(0.5f * (trace - 1.0f), -1.0f, 1.0f));
}

float angleBetweenAxes(const Math::Transform& a, const Math::Transform& b) {
  const float cosine = a(0, 0) * b(0, 0) + a(1, 0) * b(1, 0) + a(2, 0) * b(2, 0);
  return std::acos(std::clamp(cosine, -1.0f, 1.0f));
}

/** Returns the angle between where a sensor looks and where one in this frame does. */
float turnOf(ToldSort sort, const Math::Transform& mounting, const Math::Transform& frame,
             float middle) {
  if (sort == ToldSort::scan)
    return angleBetween(mounting, frame * Math::rotationFrom3DRotation(0.0f, 0.0f, middle));
  // A cone looks the same whichever way it is rolled.
  if (sort != ToldSort::depth) return angleBetweenAxes(mounting, frame);
  // Images are in an optical frame, or in the camera's.
  return std::min(angleBetween(mounting, frame), angleBetween(mounting, frame * cameraInOptics()));
}

/** A bumper has no direction, and its place is that of what carries it. */
bool looksAhead(const ToldSensor& sensor) {
  return sensor.sort == ToldSort::scan || sensor.sort == ToldSort::range ||
         sensor.sort == ToldSort::depth;
}

QVValue personAt(const geometry_msgs::Vector3& place) {
  const auto& [x, y, z] = place;
  return QVValue::array(0, static_cast<float>(std::sqrt(x * x + y * y + z * z)),
                        static_cast<float>(std::atan2(-z, std::hypot(x, y))),
                        static_cast<float>(std::atan2(y, x)));
}

/** True but for what tf rounds. */
bool isSame(const Math::Transform& a, const Math::Transform& b) {
  constexpr float kRounding = 1e-5f;
  return std::ranges::equal(a.values, b.values,
                            [](float x, float y) { return std::abs(x - y) < kRounding; });
}

geometry_msgs::Vector3 moved(const Math::Transform& way, const geometry_msgs::Vector3& from) {
  // Nothing is lost where there is no way to go.
  if (way == Math::Transform()) return from;
  const Math::Position3D to =
      way * Math::Position3D(static_cast<float>(from.x), static_cast<float>(from.y),
                             static_cast<float>(from.z));
  return {to.x, to.y, to.z};
}

}  // namespace

Math::Transform ToldModules::xMountingOf(const std::string& name) const {
  return motion->getTransform(name, robot::MotionService::kGroundFrame, true);
}

void ToldModules::xCheckFrame(const ToldSensor& sensor, const std_msgs::Header& header,
                              float middle) const {
  const std::string frame = withoutSlash(header.frame_id);
  if (frame == sensor.frame.value_or(sensor.name)) return;
  const auto placed = frames.find(frame);
  if (!placed && sensor.frame)
    throw std::runtime_error("frame " + *sensor.frame + " expected, \"" + frame + "\" given");
  if (!placed && !frames.isEarly() && frames.knowsBase()) frames.get(frame);
  if (!placed || !looksAhead(sensor)) return;
  const Math::Transform mounting = xMountingOf(sensor.name);
  const float off = std::hypot(mounting(0, 3) - (*placed)(0, 3), mounting(1, 3) - (*placed)(1, 3));
  const float turn = turnOf(sensor.sort, mounting, *placed, middle);
  if (off > kSamePlace || turn > kSameDirection)
    throw std::runtime_error("a frame where the description mounts " + sensor.name +
                             " expected, \"" + frame + "\" given, " + std::to_string(off) +
                             " m and " + std::to_string(turn) + " rad from there");
}

std::optional<Math::Transform> ToldModules::xWayToPeople(const std::string& frame) const {
  const auto all = camerasOf(model);
  if (all.empty()) return frames.get(frame);
  const std::string& camera = all.front()->name;
  const std::string reported = peopleFrameOf(*all.front());
  if (frame == reported) return Math::Transform();
  const bool isKnown = frame == camera || frames.find(frame);
  if (!isKnown && frames.isEarly()) return std::nullopt;
  const Math::Transform from = frame == camera ? xMountingOf(camera) : frames.get(frame);
  const Math::Transform to = xMountingOf(reported);
  return isSame(from, to) ? Math::Transform() : Math::inverse(to) * from;
}

void ToldModules::xTellPeople(BytesView cdr) {
  constexpr std::int64_t kMicro = 1000;
  constexpr std::int64_t kSecond = 1'000'000'000;
  const auto found = fromCdr<vision_msgs::Detection3DArray>(cdr);
  const auto time = dating(found.header.stamp).time_since_epoch().count();
  const std::string frame = withoutSlash(found.header.frame_id);
  const auto way = xWayToPeople(frame);
  if (!way) return;
  std::vector<QVValue> people;
  people.reserve(found.detections.size());
  for (const auto& detection : found.detections) {
    const auto& [x, y, z] = detection.bbox.center.position;
    checkPosition({x, y, z});
    people.push_back(personAt(moved(*way, {x, y, z})));
  }
  const QVValue stamp = QVValue::array(time / kSecond, time % kSecond / kMicro);
  memory->raiseEvent(NavigationContract::kPeopleDetectedEvent,
                     QVValue::array(stamp, people, QVValue(), QVValue(), kDepthCamera));
}

}  // namespace QV::ros2
