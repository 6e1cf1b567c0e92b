#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/cloud_points.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/message_checks.h"
#include "ros2/recording/internal/told_modules.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

// A range this far beyond the maximum is a miss for every sensor.
constexpr float kBeyond = 1.0f;
constexpr int kBumper = 2;

/**
 * Returns what a beam has met: too near is as near as can be, and what is none, as 0 often is,
 * nothing.
 */
float metBy(const ToldSensor& sensor, float range) {
  if (range == -std::numeric_limits<float>::infinity()) return sensor.minRange;
  const bool isEcho = range >= sensor.minRange && range < sensor.maxRange;
  return isEcho ? range : sensor.maxRange + kBeyond;
}

/** The beam, of those from `first` on and before `end`, that has met the nearest. */
std::size_t nearestOf(const ToldSensor& sensor, const std::vector<float>& ranges, std::size_t first,
                      std::size_t end) {
  std::size_t nearest = first;
  for (std::size_t i = first + 1; i < end; ++i)
    if (metBy(sensor, ranges[i]) < metBy(sensor, ranges[nearest])) nearest = i;
  return nearest;
}

bool movesByItself(const Model::JointConfig& joint) {
  using Model::JointType;
  return !joint.mimic &&
         (joint.type == JointType::revolute || joint.type == JointType::continuous ||
          joint.type == JointType::prismatic);
}

}  // namespace

void ToldModules::xWriteBeam(const ToldSensor& sensor, std::size_t beam, float range, float angle) {
  const float told = metBy(sensor, range);
  const auto& keys = xConfigOf(sensor).memoryKeys;
  memory->insertData(keys[2 * beam], told * std::cos(angle));
  memory->insertData(keys[2 * beam + 1], told * std::sin(angle));
}

void ToldModules::xWriteTime(const ToldSensor& sensor, ko::Clock::time_point time) {
  const std::string key = Model::SensorProperties(xConfigOf(sensor)).getText("timestamp");
  const boost::chrono::milliseconds delay(DeviceManagerContract::kScanDelay);
  if (!key.empty()) memory->insertData(key, ko::Clock::toInt32ms(time + delay));
}

void ToldModules::xWriteRange(const ToldSensor& sensor, const QVValue& value) {
  memory->insertData(xConfigOf(sensor).memoryKeys.at(0), value);
}

// If a scan has more beams than the sensor, the nearest of each group of neighbours counts.
void ToldModules::xTellScan(ToldSensor& sensor, const sensor_msgs::LaserScan& scan) {
  checkMessage(scan);
  const float middle = sensor.middle ? *sensor.middle : middleOf(scan);
  xCheckFrame(sensor, scan.header, middle);
  const auto time = dating(scan.header.stamp);
  // That of a scan which is refused may be another laser's.
  sensor.middle = middle;
  const std::size_t count = scan.ranges.size();
  for (std::size_t i = 0; i < sensor.beams; ++i) {
    const std::size_t first = i * count / sensor.beams;
    const std::size_t end = std::max((i + 1) * count / sensor.beams, first + 1);
    const std::size_t beam = nearestOf(sensor, scan.ranges, first, end);
    const float angle = scan.angle_min + scan.angle_increment * static_cast<float>(beam);
    xWriteBeam(sensor, i, scan.ranges[beam], angle - middle);
  }
  xWriteTime(sensor, time);
}

void ToldModules::xTellRange(const ToldSensor& sensor, const sensor_msgs::Range& message) {
  checkMessage(message);
  xCheckFrame(sensor, message.header);
  dating(message.header.stamp);
  const float range = message.range;
  const bool isThere = message.min_range == message.max_range ? range <= message.max_range
                                                              : range <= sensor.maxRange;
  if (sensor.sort == ToldSort::touch) return xRaiseTouch(sensor, isThere);
  if (sensor.sort == ToldSort::contact) return xWriteRange(sensor, isThere ? 1.0f : 0.0f);
  const bool isNear = range < sensor.maxRange;
  xWriteRange(sensor, isNear ? std::max(range, 0.0f) : sensor.maxRange + kBeyond);
}

// The event is raised on each change only, as bumpers do.
void ToldModules::xRaiseTouch(const ToldSensor& sensor, bool isTouched) {
  {
    const std::lock_guard lock(mutex);
    const bool wasTouched = touched.count(sensor.name) > 0;
    if (wasTouched == isTouched) return;
    if (isTouched) touched.insert(sensor.name);
    if (!isTouched) touched.erase(sensor.name);
  }
  const QVValue group =
      QVValue::array(xConfigOf(sensor).parentLink, isTouched, QVValue::array(kBumper));
  memory->raiseEvent(NavigationContract::kTouchChangedEvent, QVValue::array(group));
}

void ToldModules::xTellImage(const ToldSensor& sensor, const sensor_msgs::Image& image) {
  xCheckFrame(sensor, image.header);
  const auto time = dating(image.header.stamp);
  auto depth = depthOf(image);
  const std::lock_guard lock(mutex);
  images[sensor.name] = {std::move(depth), time, false};
}

void ToldModules::xTellCloud(const ToldSensor& sensor, const sensor_msgs::PointCloud2& cloud) {
  checkMessage(cloud);
  const auto time = dating(cloud.header.stamp);
  const Math::Transform placed = frames.get(withoutSlash(cloud.header.frame_id));
  // A sensor at height 0 is one whose height is unknown.
  constexpr float kLowest = 0.05f;
  const bool knowsFloor = Math::position3DFromTransform(placed).z > kLowest;
  std::vector<float> nearest(sensor.beams, sensor.maxRange);
  const auto beams = static_cast<float>(sensor.beams);
  for (const Math::Position3D& point : pointsOf(cloud)) {
    const Math::Position3D at = placed * point;
    if (!std::isfinite(at.x + at.y) || !isObstacle(at, knowsFloor)) continue;
    const float turn = std::atan2(at.y, at.x) / kFullTurn + 0.5f;
    const auto beam = std::min(static_cast<std::size_t>(turn * beams), sensor.beams - 1);
    nearest[beam] = std::min(nearest[beam], std::hypot(at.x, at.y));
  }
  for (std::size_t i = 0; i < sensor.beams; ++i) {
    const float angle = ((static_cast<float>(i) + 0.5f) / beams - 0.5f) * kFullTurn;
    xWriteBeam(sensor, i, nearest[i], angle);
  }
  xWriteTime(sensor, time);
}

void ToldModules::xTellJoints(BytesView cdr) {
  const auto joints = fromCdr<sensor_msgs::JointState>(cdr);
  checkMessage(joints);
  std::map<std::string, double> positions;
  for (const Model::JointConfig& joint : model.joints) {
    const auto found = std::ranges::find(joints.name, joint.name);
    if (found == joints.name.end() || joints.position.empty() || !movesByItself(joint)) continue;
    // As a key holds it: a recording has no more of it.
    const auto position =
        static_cast<float>(joints.position[static_cast<std::size_t>(found - joints.name.begin())]);
    positions[joint.name] = position;
    memory->insertData(jointKeyOf(joint.name), position);
  }
  if (!positions.empty()) motion->setJointPositions(positions);
}

void ToldModules::xTellOdometry(BytesView cdr) {
  const auto odometry = fromCdr<nav_msgs::Odometry>(cdr);
  checkMessage(odometry);
  dating(odometry.header.stamp);
  const auto& [linear, angular] = odometry.twist.twist;
  motion->setRobotVelocity(
      {static_cast<float>(linear.x), static_cast<float>(linear.y), static_cast<float>(angular.z)});
  frames.add(odometry);
}

}  // namespace QV::ros2
