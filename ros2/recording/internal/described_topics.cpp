#include <optional>
#include <stdexcept>

#include "platform/model/sensor_properties.h"
#include "ros2/recording/internal/sensor_sorts.h"
#include "ros2/recording/internal/topic_names.h"
#include "ros2/recording/internal/topic_survey.h"

namespace QV::ros2 {
namespace {

struct Said {
  ToldSort sort;
  const char* what;
};

bool isCloud(const Model::SensorConfig& config) {
  const std::string type = Model::SensorProperties(config).getText("messageType");
  if (isOf<sensor_msgs::PointCloud2>(type)) return true;
  if (type.empty() || isOf<sensor_msgs::LaserScan>(type)) return false;
  throw std::runtime_error(config.name +
                           ": property \"messageType\": sensor_msgs/msg/LaserScan or "
                           "sensor_msgs/msg/PointCloud2 expected, \"" +
                           type + "\" given");
}

std::optional<Said> saidBy(const Model::SensorConfig& config, const Model::SensorKinds& kinds) {
  switch (sortOf(config, kinds)) {
    case SensorSort::scan:
      return isCloud(config) ? Said{ToldSort::cloud, "points"} : Said{ToldSort::scan, "scan"};
    case SensorSort::range:
      return Said{ToldSort::range, "range"};
    case SensorSort::contact:
      return Said{config.memoryKeys.empty() ? ToldSort::touch : ToldSort::contact, "contact"};
    case SensorSort::camera:
      return Said{ToldSort::depth, "image"};
    case SensorSort::other:
      break;
  }
  return std::nullopt;
}

ToldSensor sensorOf(const Model::SensorConfig& config, const Said& said,
                    const std::string& prefix) {
  const Model::SensorProperties properties(config);
  const auto view = properties.getFieldOfView();
  ToldSensor sensor;
  sensor.sort = said.sort;
  sensor.name = config.name;
  sensor.topic = properties.getText("topic");
  if (sensor.topic.empty())
    sensor.topic = prefix + driverTopicOf(toGraphName(config.name), said.what);
  if (properties.has("frame")) sensor.frame = withoutSlash(properties.getText("frame"));
  sensor.minRange = view.minRange;
  sensor.maxRange = view.maxRange;
  sensor.beams = config.memoryKeys.size() / 2;
  return sensor;
}

}  // namespace

TopicSurvey surveyDescription(const Model::Robot& robot, const Model::SensorKinds& kinds,
                              const std::string& prefix) {
  TopicSurvey survey;
  survey.base = robot.rootLink;
  survey.odometryTopic = prefix + "/odom";
  for (const auto& [name, config] : robot.sensorConfigs) {
    const auto said = saidBy(config, kinds);
    if (!said) continue;
    const ToldSensor sensor = sensorOf(config, *said, prefix);
    const auto [other, isNew] = survey.sensors.emplace(sensor.topic, sensor);
    if (!isNew)
      throw std::runtime_error("a topic for each sensor expected, " + sensor.topic + " given for " +
                               other->second.name + " and " + name);
  }
  return survey;
}

}  // namespace QV::ros2
