#include "ros2/recording/internal/topic_survey.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/message_checks.h"

namespace QV::ros2 {
namespace {

// The limit is higher than any robot has sensors.
constexpr std::size_t kMostSensors = 1000;
constexpr std::size_t kMostInfos = 100;
constexpr std::size_t kLargestInfo = 10'000;
// A cloud becomes a laser: the nearest obstacle in each direction.
constexpr std::size_t kCloudBeams = 720;
constexpr float kCloudRange = 30.0f;
// The usual apertures of depth cameras, for a camera without CameraInfo.
constexpr float kUsualAperture = 1.02f;
constexpr float kUsualVerticalAperture = 0.79f;

bool makesSensor(const std::string& type) {
  return isOf<sensor_msgs::LaserScan>(type) || isOf<sensor_msgs::Range>(type) ||
         isOf<sensor_msgs::Image>(type) || isOf<sensor_msgs::PointCloud2>(type);
}

std::string nameOf(const std::string& topic) {
  std::string name = withoutSlash(topic);
  for (char& letter : name)
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  return name.empty() ? "sensor" : name;
}

/** "/camera" of "/camera/depth"; empty for a topic without one. */
std::string folderOf(const std::string& topic) {
  return topic.substr(0, topic.rfind('/'));
}

bool isSound(float least, float most) {
  return std::isfinite(least) && std::isfinite(most) && least >= 0.0f && most > least;
}

/** True if the last beam lies beside the first one. */
bool goesAround(const sensor_msgs::LaserScan& scan) {
  return std::abs(scan.angle_increment) * (static_cast<float>(scan.ranges.size()) + 0.5f) >=
         kFullTurn;
}

ToldSensor sensorOf(const sensor_msgs::LaserScan& scan) {
  checkMessage(scan);
  ToldSensor sensor;
  sensor.sort = ToldSort::scan;
  sensor.frame = scan.header.frame_id;
  sensor.beams = scan.ranges.size();
  sensor.middle = middleOf(scan);
  const float beyond = goesAround(scan) ? 0.0f : 1.0f;
  sensor.aperture = std::min(
      std::abs(scan.angle_increment) * (static_cast<float>(sensor.beams) - beyond), kFullTurn);
  sensor.minRange = scan.range_min;
  sensor.maxRange = scan.range_max;
  if (!isSound(scan.range_min, scan.range_max))
    throw std::runtime_error("valid limits of range and angle expected");
  return sensor;
}

// A Range whose limits are equal reports a contact only.
ToldSensor sensorOf(const sensor_msgs::Range& range) {
  ToldSensor sensor;
  const bool isContact = range.min_range == range.max_range;
  sensor.sort = isContact ? ToldSort::contact : ToldSort::range;
  sensor.frame = range.header.frame_id;
  sensor.minRange = isContact ? 0.0f : range.min_range;
  sensor.maxRange = range.max_range;
  sensor.aperture = std::clamp(range.field_of_view, 0.0f, kFullTurn);
  if (isContact && sensor.maxRange <= 0.0f) sensor.maxRange = 0.05f;
  if (!isSound(sensor.minRange, sensor.maxRange) || !std::isfinite(range.field_of_view))
    throw std::runtime_error("min_range below max_range expected");
  return sensor;
}

bool isDepth(const sensor_msgs::Image& image) {
  return image.encoding == "16UC1" || image.encoding == "32FC1" || image.encoding == "mono16";
}

ToldSensor sensorOf(const sensor_msgs::Image& image) {
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

/** Returns std::nullopt for a focal length (pixels) that is none: 0 of uncalibrated cameras, NaN.
 */
std::optional<float> apertureOf(std::uint32_t pixels, double focus) {
  if (!(focus > 0.0)) return std::nullopt;
  const auto angle = static_cast<float>(2.0 * std::atan(0.5 * pixels / focus));
  return angle > 0.0f ? std::optional(angle) : std::nullopt;
}

/** Returns std::nullopt for an image that is not depth. */
std::optional<ToldSensor> sensorOf(const ToldMessage& message) {
  const auto& type = message.type;
  if (isOf<sensor_msgs::LaserScan>(type))
    return sensorOf(fromCdr<sensor_msgs::LaserScan>(message.cdr));
  if (isOf<sensor_msgs::Range>(type)) return sensorOf(rangeFromCdr(message.cdr));
  if (isOf<sensor_msgs::PointCloud2>(type))
    return sensorOf(fromCdr<sensor_msgs::PointCloud2>(message.cdr));
  const auto image = fromCdr<sensor_msgs::Image>(message.cdr);
  if (!isDepth(image)) return std::nullopt;
  return sensorOf(image);
}

}  // namespace

float middleOf(const sensor_msgs::LaserScan& scan) {
  if (goesAround(scan)) return 0.0f;
  return scan.angle_min + 0.5f * scan.angle_increment * static_cast<float>(scan.ranges.size() - 1);
}

void TopicSurveyor::expect(const std::string& topic, const std::string& type) {
  if (makesSensor(type)) missing.insert(topic);
}

void TopicSurveyor::take(const ToldMessage& message) {
  try {
    xTake(message);
  } catch (const std::runtime_error&) {
    // The next one may be sound.
    constexpr int kPatience = 100;
    if (++refused[message.topic] == kPatience) missing.erase(message.topic);
  }
}

void TopicSurveyor::xTake(const ToldMessage& message) {
  const auto& [topic, type, cdr] = message;
  // The robot begins where it was first.
  if (isOf<tf2_msgs::TFMessage>(type)) survey.frames.addNew(fromCdr<tf2_msgs::TFMessage>(cdr));
  if (isOf<nav_msgs::Odometry>(type) && survey.odometryTopic.empty()) {
    survey.base = withoutSlash(fromCdr<nav_msgs::Odometry>(cdr).child_frame_id);
    survey.odometryTopic = topic;
  }
  if (isOf<sensor_msgs::CameraInfo>(type) && infos.size() < kMostInfos && cdr.size() < kLargestInfo)
    infos.push_back(fromCdr<sensor_msgs::CameraInfo>(cdr));
  if (missing.count(topic) == 0) return;
  auto sensor = sensorOf(message);
  // The text of a description would end there.
  if (sensor && sensor->frame->find('\0') != std::string::npos)
    throw std::runtime_error("a frame's name without zeros expected");
  missing.erase(topic);
  if (!sensor) return;
  if (survey.sensors.size() == kMostSensors) return xLeaveOut(topic);
  sensor->topic = topic;
  sensor->name = nameOf(topic);
  while (!names.insert(sensor->name).second) sensor->name += "_2";
  sensor->frame = withoutSlash(*sensor->frame);
  survey.sensors.emplace(topic, std::move(*sensor));
}

void TopicSurveyor::xLeaveOut(const std::string& topic) {
  if (std::exchange(leavesOut, true)) return;
  ko::log::warning("Recording", "survey")
      << "more than " << kMostSensors << " topics make sensors: " << topic
      << " and what comes up after it are left out";
}

TopicSurvey TopicSurveyor::make() {
  if (survey.sensors.empty())
    throw std::runtime_error(
        "a topic of LaserScan, Range, a depth Image or PointCloud2 expected, none found");
  std::erase_if(survey.sensors, [this](const auto& entry) { return xIsOfCamera(entry.second); });
  xFindBase();
  xNameUnplaced();
  for (auto& [topic, sensor] : survey.sensors) xMount(sensor);
  return std::move(survey);
}

// Returns the child frame of odometry, else one of the usual names, else the root of all frames.
void TopicSurveyor::xFindBase() {
  for (const char* const usual : {"base_link", "base_footprint", "base"})
    if (survey.base.empty() && survey.frames.has(usual)) survey.base = usual;
  if (survey.base.empty())
    survey.base = survey.frames.rootOf(*survey.sensors.begin()->second.frame);
}

// A cloud's frame is looked up at each message.
void TopicSurveyor::xNameUnplaced() const {
  std::string names;
  for (const auto& [topic, sensor] : survey.sensors)
    if (sensor.sort != ToldSort::cloud && !survey.frames.find(*sensor.frame, survey.base))
      names += (names.empty() ? "" : ", ") + sensor.name + " (\"" + *sensor.frame + "\")";
  if (names.empty()) return;
  ko::log::warning("Recording", "survey")
      << "tf does not connect these sensors' frames to \"" << survey.base
      << "\", they are mounted at 0,0,0: " << names;
}

// A depth camera's points come beside its images or in their frame.
bool TopicSurveyor::xIsOfCamera(const ToldSensor& sensor) const {
  if (sensor.sort != ToldSort::cloud) return false;
  const auto isItsCamera = [&](const auto& entry) {
    const ToldSensor& other = entry.second;
    const std::string folder = folderOf(other.topic);
    return other.sort == ToldSort::depth &&
           (other.frame == sensor.frame || (!folder.empty() && folderOf(sensor.topic) == folder));
  };
  return std::ranges::any_of(survey.sensors, isItsCamera);
}

void TopicSurveyor::xMount(ToldSensor& sensor) const {
  sensor.mounting = survey.frames.find(*sensor.frame, survey.base).value_or(Math::Transform());
  if (sensor.sort == ToldSort::cloud) sensor.mounting = {};
  if (sensor.sort == ToldSort::scan)
    sensor.mounting = sensor.mounting * Math::rotationFrom3DRotation(0.0f, 0.0f, *sensor.middle);
  if (sensor.sort == ToldSort::depth) xMountCamera(sensor);
}

void TopicSurveyor::xMountCamera(ToldSensor& sensor) const {
  sensor.mounting = sensor.mounting * cameraInOptics();
  for (const auto& info : infos) {
    const auto aperture = apertureOf(info.width, info.k[0]);
    if (withoutSlash(info.header.frame_id) != sensor.frame || !aperture) continue;
    sensor.aperture = *aperture;
    sensor.verticalAperture = apertureOf(info.height, info.k[4]).value_or(sensor.verticalAperture);
    return;
  }
}

}  // namespace QV::ros2
