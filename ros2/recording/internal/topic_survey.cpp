#include "ros2/recording/internal/topic_survey.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>
#include <set>
#include <stdexcept>

#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/conversions.h"

namespace QV::ros2 {
namespace {

constexpr std::uint64_t kLongEnough = 30'000'000'000;
constexpr std::size_t kMostBeams = 10'000;
// Of a cloud: the nearest obstacle in each direction.
constexpr std::size_t kCloudBeams = 720;
constexpr float kCloudRange = 30.0f;
// What cameras of this sort see, where nobody has said.
constexpr float kUsualAperture = 1.02f;
constexpr float kUsualVerticalAperture = 0.79f;

bool makesSensor(const BagTopic& topic) {
  return isOf<sensor_msgs::LaserScan>(topic) || isOf<sensor_msgs::Range>(topic) ||
         isOf<sensor_msgs::Image>(topic) || isOf<sensor_msgs::PointCloud2>(topic);
}

std::string nameOf(const std::string& topic) {
  std::string name = withoutSlash(topic);
  for (char& letter : name)
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  return name.empty() ? "sensor" : name;
}

bool isSound(float least, float most) {
  return std::isfinite(least) && std::isfinite(most) && least >= 0.0f && most > least;
}

ToldSensor sensorOf(const sensor_msgs::LaserScan& scan) {
  ToldSensor sensor;
  sensor.sort = ToldSort::scan;
  sensor.frame = scan.header.frame_id;
  sensor.beams = std::min(scan.ranges.size(), kMostBeams);
  const float last =
      scan.angle_min +
      scan.angle_increment * static_cast<float>(std::max<std::size_t>(sensor.beams, 1) - 1);
  sensor.middle = 0.5f * (scan.angle_min + last);
  sensor.aperture = std::min(std::abs(last - scan.angle_min), kFullTurn);
  sensor.minRange = scan.range_min;
  sensor.maxRange = scan.range_max;
  if (!isSound(scan.range_min, scan.range_max) || !std::isfinite(sensor.middle) ||
      sensor.beams == 0)
    throw std::runtime_error("beams between two ranges and angles expected");
  return sensor;
}

// One whose limits are the same tells of a contact only.
ToldSensor sensorOf(const sensor_msgs::Range& range) {
  ToldSensor sensor;
  const bool isContact = range.min_range == range.max_range;
  sensor.sort = isContact ? ToldSort::contact : ToldSort::range;
  sensor.frame = range.header.frame_id;
  sensor.minRange = isContact ? 0.0f : range.min_range;
  sensor.maxRange = range.max_range;
  sensor.aperture = std::clamp(range.field_of_view, 0.0f, kFullTurn);
  if (isContact && sensor.maxRange <= 0.0f) sensor.maxRange = 0.05f;
  if (!isSound(sensor.minRange, sensor.maxRange))
    throw std::runtime_error("a range between two others expected");
  return sensor;
}

ToldSensor sensorOf(const sensor_msgs::Image& image) {
  if (image.encoding != "16UC1" && image.encoding != "32FC1" && image.encoding != "mono16")
    throw std::runtime_error("a depth image expected");
  ToldSensor sensor;
  sensor.sort = ToldSort::depth;
  sensor.frame = image.header.frame_id;
  sensor.minRange = 0.4f;
  sensor.maxRange = 8.0f;
  sensor.aperture = kUsualAperture;
  sensor.verticalAperture = kUsualVerticalAperture;
  return sensor;
}

ToldSensor sensorOf(const sensor_msgs::PointCloud2& cloud) {
  ToldSensor sensor;
  sensor.sort = ToldSort::cloud;
  sensor.frame = cloud.header.frame_id;
  sensor.maxRange = kCloudRange;
  sensor.aperture = kFullTurn;
  sensor.beams = kCloudBeams;
  return sensor;
}

ToldSensor sensorOf(const BagMessage& message) {
  const BagTopic& topic = *message.topic;
  if (isOf<sensor_msgs::LaserScan>(topic))
    return sensorOf(fromCdr<sensor_msgs::LaserScan>(message.data));
  if (isOf<sensor_msgs::Range>(topic)) return sensorOf(fromCdr<sensor_msgs::Range>(message.data));
  if (isOf<sensor_msgs::Image>(topic)) return sensorOf(fromCdr<sensor_msgs::Image>(message.data));
  return sensorOf(fromCdr<sensor_msgs::PointCloud2>(message.data));
}

/** Reads messages until all is known. */
class Surveyor {
 public:
  explicit Surveyor(const std::string& path) : bag(path) {
    for (const BagTopic* const topic : bag.getTopics())
      if (makesSensor(*topic) && bag.getCount(topic->name) != 0) missing.insert(topic->name);
  }

  TopicSurvey make(const std::string& path) {
    const std::uint64_t start = bag.getTimes().start;
    while (const auto message = bag.next()) {
      if (missing.empty() && message->logTime - start > kLongEnough) break;
      xTryToTake(*message);
    }
    if (survey.sensors.empty())
      throw std::runtime_error(
          path +
          ": a topic of LaserScan, Range, a depth Image or PointCloud2 expected, none found");
    xFindBase();
    for (auto& [topic, sensor] : survey.sensors) xMount(sensor);
    return std::move(survey);
  }

 private:
  void xTryToTake(const BagMessage& message) {
    try {
      xTake(message);
    } catch (const std::runtime_error&) {
      missing.erase(message.topic->name);
    }
  }

  void xTake(const BagMessage& message) {
    const BagTopic& topic = *message.topic;
    // The robot begins where it was first.
    if (isOf<tf2_msgs::TFMessage>(topic))
      survey.frames.addNew(fromCdr<tf2_msgs::TFMessage>(message.data));
    if (isOf<nav_msgs::Odometry>(topic) && survey.odometryTopic.empty()) {
      survey.odometryTopic = topic.name;
      survey.base = withoutSlash(fromCdr<nav_msgs::Odometry>(message.data).child_frame_id);
    }
    if (isOf<sensor_msgs::CameraInfo>(topic))
      infos.push_back(fromCdr<sensor_msgs::CameraInfo>(message.data));
    if (infos.size() > 100) infos.pop_back();
    if (missing.erase(topic.name) == 0) return;
    ToldSensor sensor = sensorOf(message);
    sensor.topic = topic.name;
    sensor.name = nameOf(topic.name);
    while (!names.insert(sensor.name).second) sensor.name += "_2";
    sensor.frame = withoutSlash(sensor.frame);
    survey.sensors.emplace(topic.name, std::move(sensor));
  }

  // The frame that odometry is of, one of the usual names, or what all hangs on.
  void xFindBase() {
    for (const char* const usual : {"base_link", "base_footprint", "base"})
      if (survey.base.empty() && survey.frames.has(usual)) survey.base = usual;
    if (survey.base.empty())
      survey.base = survey.frames.rootOf(survey.sensors.begin()->second.frame);
  }

  void xMount(ToldSensor& sensor) const {
    sensor.mounting = survey.frames.find(sensor.frame, survey.base).value_or(Math::Transform());
    if (sensor.sort == ToldSort::cloud) sensor.mounting = {};
    if (sensor.sort == ToldSort::scan)
      sensor.mounting = sensor.mounting * Math::rotationFrom3DRotation(0.0f, 0.0f, sensor.middle);
    if (sensor.sort == ToldSort::depth) xMountCamera(sensor);
  }

  void xMountCamera(ToldSensor& sensor) const {
    // From z ahead, x to the right and y down.
    constexpr float kQuarter = 0.5f * std::numbers::pi_v<float>;
    sensor.mounting =
        sensor.mounting * Math::inverse(Math::rotationFrom3DRotation(-kQuarter, 0.0f, -kQuarter));
    for (const auto& info : infos) {
      if (withoutSlash(info.header.frame_id) != sensor.frame || info.k[0] <= 0.0) continue;
      const auto angle = [](double pixels, double focus) {
        return static_cast<float>(2.0 * std::atan(0.5 * pixels / focus));
      };
      sensor.aperture = angle(info.width, info.k[0]);
      if (info.k[4] > 0.0) sensor.verticalAperture = angle(info.height, info.k[4]);
      return;
    }
  }

  BagReader bag;
  TopicSurvey survey;
  /** Topics that are to make a sensor and have not come up. */
  std::set<std::string> missing;
  std::set<std::string> names;
  std::vector<sensor_msgs::CameraInfo> infos;
};

}  // namespace

TopicSurvey surveyTopics(const std::string& path) {
  return Surveyor(path).make(path);
}

}  // namespace QV::ros2
