#include "ros2/recording/internal/driver_topics.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>

#include "platform/math/transform.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/motion_service.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/range_messages.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

using Model::SensorConfig;
using Model::SensorProperties;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kEventParts = 5;

sensor_msgs::CameraInfo infoOf(const SensorConfig& config, const sensor_msgs::Image& image) {
  const SensorProperties properties(config);
  const auto focusOf = [](std::uint32_t pixels, float angle) {
    return 0.5 * pixels / std::tan(0.5 * static_cast<double>(angle));
  };
  const double fx = focusOf(image.width, properties.getAngle("horizontalAngularRange"));
  const double fy = focusOf(image.height, properties.getAngle("verticalAngularRange"));
  const double cx = 0.5 * (image.width - 1);
  const double cy = 0.5 * (image.height - 1);
  sensor_msgs::CameraInfo info;
  info.header = image.header;
  info.height = image.height;
  info.width = image.width;
  info.distortion_model = "plumb_bob";
  info.d = {0.0, 0.0, 0.0, 0.0, 0.0};
  info.k = {fx, 0.0, cx, 0.0, fy, cy, 0.0, 0.0, 1.0};
  info.r = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
  info.p = {fx, 0.0, cx, 0.0, 0.0, fy, cy, 0.0, 0.0, 0.0, 1.0, 0.0};
  return info;
}

void fill(sensor_msgs::Image& image, const QVImage& picture, const std::string& frame) {
  constexpr std::uint32_t kBytesPerPixel = 2;
  image.header =
      headerOf(ko::Clock::time_point(boost::chrono::microseconds(picture.getTimestamp())), frame);
  image.height = static_cast<std::uint32_t>(picture.getHeight());
  image.width = static_cast<std::uint32_t>(picture.getWidth());
  image.encoding = "16UC1";
  image.step = kBytesPerPixel * image.width;
  image.data.assign(picture.getPixels(), picture.getPixels() + picture.getSize());
}

/** Returns the way from the frame in which people are reported to the camera's, with all joints at
 * rest; exactly none if they are the same, or if one of them is nowhere. */
Math::Transform wayOfPeople(const Model::Robot& robot, const SensorConfig& camera) {
  const robot::MotionService motion(robot);
  const auto placeOf = [&](const std::string& frame) {
    return motion.getTransform(frame, robot::MotionService::kGroundFrame, true);
  };
  try {
    const auto from = placeOf(peopleFrameOf(camera));
    const auto to = placeOf(camera.name);
    return from == to ? Math::Transform() : Math::inverse(to) * from;
  } catch (const std::invalid_argument&) {
    return {};
  }
}

vision_msgs::Detection3D detectionOf(const QVValue& person, const Math::Transform& way,
                                     const std_msgs::Header& header) {
  constexpr double kWidth = 0.5;
  constexpr double kHeight = 1.8;
  const Math::Position3D head =
      way * Math::rotationFrom3DRotation(0.0f, person[2].toFloat(), person[3].toFloat()) *
      Math::Position3D(person[1].toFloat(), 0.0f, 0.0f);
  vision_msgs::Detection3D detection;
  detection.header = header;
  detection.id = std::to_string(person[0].toInt());
  detection.bbox.center.position = pointOf(head);
  detection.bbox.size = {kWidth, kWidth, kHeight};
  detection.results.push_back({{"person", 1.0}, {}});
  detection.results.front().pose.pose = detection.bbox.center;
  return detection;
}

}  // namespace

DriverTopics::DriverTopics(MessageSink& sink, const Model::Robot& robot,
                           const Model::SensorKinds& kinds, const FrameNames& names)
    : sink(sink), names(names) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    const SensorSort sort = sortOf(config, kinds);
    if (sort == SensorSort::camera) {
      xAddCamera(robot, config);
    } else {
      xAdd(config, sort);
    }
  }
}

void DriverTopics::xAddCamera(const Model::Robot& robot, const SensorConfig& config) {
  const std::string& name = config.name;
  cameras.push_back({&config, names.ofOptics(name),
                     sink.add<sensor_msgs::Image>(imageTopicOf(name), {}, name),
                     sink.add<sensor_msgs::CameraInfo>("/" + name + "/camera_info", {}, name),
                     wayOfPeople(robot, config)});
  if (people) return;
  people = sink.add<vision_msgs::Detection3DArray>("/people", {}, kPeoplePerception);
}

std::optional<std::uint16_t> DriverTopics::xAddTopic(const SensorConfig& config, SensorSort sort) {
  const std::string& name = config.name;
  switch (sort) {
    case SensorSort::scan:
      return sink.add<sensor_msgs::LaserScan>("/" + name + "/scan", {}, name);
    case SensorSort::range:
      return sink.add<sensor_msgs::Range>("/" + name + "/range", {}, name);
    case SensorSort::contact:
      return sink.add<sensor_msgs::Range>("/" + name + "/contact", {},
                                          config.memoryKeys.empty() ? kTouch : name);
    default:
      return std::nullopt;
  }
}

void DriverTopics::xAdd(const SensorConfig& config, SensorSort sort) {
  const auto topic = xAddTopic(config, sort);
  if (!topic) return;
  for (std::size_t i = 0; i < config.memoryKeys.size(); ++i) {
    places[config.memoryKeys[i]] = {sensors.size(), i};
  }
  if (config.memoryKeys.empty()) touched[config.parentLink] = sensors.size();
  const std::size_t values = std::max<std::size_t>(config.memoryKeys.size(), 1);
  sensors.push_back({&config, sort, *topic, std::vector<float>(values, 0.0f)});
}

void DriverTopics::note(const std::string& key, const QVValue& value) {
  const auto place = places.find(key);
  if (place != places.end()) {
    xNote(place->second, value);
  } else if (key == NavigationContract::kTouchChangedEvent) {
    xNoteTouches(value);
  } else if (key == NavigationContract::kPeopleDetectedEvent && people) {
    newPeople = value;
    hasNew = true;
  }
}

// A value of another type is nonsense, which the robot's own reader refuses as well.
void DriverTopics::xNote(const Place& place, const QVValue& value) {
  Sensor& sensor = sensors[place.sensor];
  const bool isNumber = value.isFloat() || value.isInt();
  if (!isNumber && sensor.values.size() == 1) return;
  sensor.values[place.value] = isNumber ? value.toFloat() : kNaN;
  if (place.value == 0) sensor.noted = 0;
  if (place.value != sensor.noted || ++sensor.noted < sensor.values.size()) return;
  sensor.isNew = hasNew = true;
}

void DriverTopics::xNoteTouches(const QVValue& event) {
  try {
    for (const QVValue& group : event.toArray()) {
      const auto found = touched.find(group[0].toString());
      if (found == touched.end()) continue;
      sensors[found->second].values[0] = group[1].toBool() ? 1.0f : 0.0f;
      sensors[found->second].isNew = hasNew = true;
    }
  } catch (const std::exception&) {
    return;
  }
}

void DriverTopics::write(ko::Clock::time_point time) {
  hasNew = false;
  for (Sensor& sensor : sensors) {
    const bool isNew = std::exchange(sensor.isNew, false);
    if (!isNew || !sink.isRead(sensor.topic)) continue;
    if (sensor.sort == SensorSort::scan) {
      xWriteScan(sensor, time);
    } else {
      xWriteRange(sensor, time);
    }
  }
  if (newPeople && sink.isRead(*people)) xWritePeople(*newPeople, time);
  newPeople.reset();
}

// Beams stand at equal angles about the sensor's x axis, from right to left.
void DriverTopics::xWriteScan(const Sensor& sensor, ko::Clock::time_point time) {
  const auto view = SensorProperties(*sensor.config).getFieldOfView();
  const std::size_t beams = sensor.values.size() / 2;
  auto scan = scanOf(view, beams);
  scan.header = headerOf(time, names.of(sensor.config->name));
  for (std::size_t i = 0; i < beams; ++i) {
    const float range = std::hypot(sensor.values[2 * i], sensor.values[2 * i + 1]);
    scan.ranges.push_back(rangeIn(view, range));
  }
  sink.write(sensor.topic, logTimeOf(time), scan);
}

void DriverTopics::xWriteRange(const Sensor& sensor, ko::Clock::time_point time) {
  const SensorConfig& config = *sensor.config;
  const auto view = SensorProperties(config).getFieldOfView();
  const float value = sensor.values.front();
  sensor_msgs::Range message;
  if (sensor.sort == SensorSort::contact) {
    message = contactOf(view, value > Model::kPresenceThreshold);
  } else {
    message = rangeOf(view);
    message.range = rangeIn(view, value);
    if (message.range == kInfinity && !noEchoIsInfinite) message.range = view.maxRange;
  }
  message.header = headerOf(time, names.of(config.name));
  sink.write(sensor.topic, logTimeOf(time), message);
}

void DriverTopics::xWritePeople(const QVValue& event, ko::Clock::time_point time) {
  vision_msgs::Detection3DArray found;
  try {
    const QVValue& camera = event[kEventParts - 1];
    const auto index = static_cast<std::size_t>(camera.toInt() - kDepthCamera);
    // A camera that the description does not have is nowhere.
    if (index >= cameras.size()) return;
    const auto& [config, frame, image, info, way] = cameras[index];
    found.header = headerOf(time, names.of(config->name));
    for (const QVValue& person : event[1].toArray())
      found.detections.push_back(detectionOf(person, way, found.header));
  } catch (const std::exception&) {
    return;
  }
  sink.write(*people, logTimeOf(time), found);
}

void DriverTopics::writeImage(int camera, const QVValue& value, ko::Clock::time_point time) {
  const auto index = static_cast<std::size_t>(camera - kDepthCamera);
  const auto picture = QVImage::fromQVValue(value);
  if (index >= cameras.size() || !picture) return;
  const Camera& of = cameras[index];
  if (!sink.isRead(of.info) && !sink.isRead(of.image)) return;
  fill(image, *picture, of.frame);
  sink.write(of.info, logTimeOf(time), infoOf(*of.config, image));
  sink.write(of.image, logTimeOf(time), image);
}

}  // namespace QV::ros2
