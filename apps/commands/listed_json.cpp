#include "apps/commands/listed_json.h"

#include "outlets/internal/json_values.h"

namespace QV::app {

using nlohmann::ordered_json;

namespace {

ordered_json sensorToJson(const session::ListedSensor& sensor) {
  const auto& at = sensor.position;
  return {{"sensorName", sensor.name},
          {"familyName", sensor.family},
          {"fieldOfView", outlets::toJson(sensor.fieldOfView)},
          {"mounting",
           {{"x", outlets::toJson(at.x)},
            {"y", outlets::toJson(at.y)},
            {"z", outlets::toJson(at.z)},
            {"heading", outlets::toJson(sensor.heading)}}}};
}

ordered_json describedToJson(const session::ListedSensor& sensor) {
  ordered_json listed = sensorToJson(sensor);
  const auto orNull = [](const std::string& name, bool isSo) {
    return isSo ? ordered_json(name) : ordered_json();
  };
  listed["sensorName"] = orNull(sensor.name, sensor.canBeBuilt);
  listed["describedAs"] = orNull(sensor.describedAs, !sensor.describedAs.empty());
  listed["fieldOfView"].erase("rayCount");
  if (sensor.describedAs.empty()) listed["fieldOfView"] = listed["mounting"] = nullptr;
  listed["type"] = sensor.type;
  listed["typeName"] = orNull(sensor.typeName, !sensor.typeName.empty());
  listed["memoryKeys"] = sensor.keys;
  listed["link"] = sensor.link;
  return listed;
}

}  // namespace

bool isSupported(const Model::CollisionShape& shape) {
  return !std::holds_alternative<Math::UnsupportedShape>(shape.getShape());
}

ordered_json robotToJson(const robot::RobotDescription& description,
                         const session::OpenOptions& robots) {
  const Model::Robot& robot = description.model;
  ordered_json result{{"robot", robot.name},
                      {"kind", robot.kindCode},
                      {"sensors", ordered_json::array()},
                      {"collisionShapes", ordered_json::array()}};
  for (const auto& sensor : session::sensorsOf(description, robots)) {
    result["sensors"].push_back(describedToJson(sensor));
  }
  for (const auto& [name, shape] : robot.collisionShapes) {
    result["collisionShapes"].push_back({{"name", name},
                                         {"kind", Math::getKind(shape->getShape())},
                                         {"joint", shape->getParentJoint()},
                                         {"supported", isSupported(*shape)}});
  }
  return result;
}

ordered_json kindToJson(int kind, const std::vector<session::ListedSensor>& sensors) {
  ordered_json result{{"kind", kind}};
  for (const auto& sensor : sensors) result["sensors"].push_back(sensorToJson(sensor));
  return result;
}

}  // namespace QV::app
