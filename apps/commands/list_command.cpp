#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/number_text.h"
#include "apps/output/record_output.h"
#include "apps/output/table.h"
#include "apps/run/listed_sensor.h"
#include "robot/world/robot_description.h"

namespace QV::app {
namespace {

using nlohmann::ordered_json;

void printKind(int kind, const std::vector<ListedSensor>& sensors) {
  std::cout << "Simulated sensors of kind " << kind
            << ". Mounting in the robot's frame (m, rad), ranges in m, apertures in rad.\n";
  Table table({"family", "sensor", ">min", ">max", ">aperture", ">rays", ">x", ">y", ">heading"});
  for (const auto& sensor : sensors) {
    const auto& fov = sensor.fieldOfView;
    table.add({sensor.family, sensor.name, shortest(fov.minRange), shortest(fov.maxRange),
               fixed(fov.angularRange, 3), std::to_string(fov.rayCount),
               fixed(sensor.position.x, 2), fixed(sensor.position.y, 2), fixed(sensor.heading, 3)});
  }
  table.print(std::cout);
}

void printSensors(const Model::Robot& robot) {
  std::cout << "Robot " << robot.name << " of kind " << robot.kindCode
            << ". Mounting in the link's frame (m, rad), ranges in m, apertures in rad.\n";
  Table table({"family", "sensor", ">type", ">min", ">max", ">aperture", ">keys", "link", ">x",
               ">y", ">z", ">heading"});
  for (const auto& sensor : sensorsOf(robot)) {
    const auto& fov = sensor.fieldOfView;
    table.add({sensor.family.empty() ? "(none)" : sensor.family, sensor.name,
               std::to_string(sensor.type), fixed(fov.minRange, 2), fixed(fov.maxRange, 2),
               fixed(fov.angularRange, 3), std::to_string(sensor.keys), sensor.link,
               fixed(sensor.position.x, 2), fixed(sensor.position.y, 2),
               fixed(sensor.position.z, 2), fixed(sensor.heading, 3)});
  }
  table.print(std::cout);
}

bool isSupported(const Model::CollisionShape& shape) {
  return !std::holds_alternative<Math::UnsupportedShape>(shape.getShape());
}

void printShapes(const Model::Robot& robot) {
  std::cout << "\nCollision shapes\n";
  Table table({"shape", "kind", "joint", ""});
  for (const auto& [name, shape] : robot.collisionShapes) {
    table.add({name, Math::getKind(shape->getShape()),
               shape->getParentJoint().empty() ? "(root)" : shape->getParentJoint(),
               isSupported(*shape) ? "" : "not supported"});
  }
  table.print(std::cout);
}

ordered_json sensorToJson(const ListedSensor& sensor) {
  const auto& at = sensor.position;
  return {{"name", sensor.name},
          {"family", sensor.family},
          {"fieldOfView", toJson(sensor.fieldOfView)},
          {"mounting",
           {{"x", toJson(at.x)},
            {"y", toJson(at.y)},
            {"z", toJson(at.z)},
            {"heading", toJson(sensor.heading)}}}};
}

ordered_json robotToJson(const Model::Robot& robot) {
  ordered_json result{{"robot", robot.name},
                      {"kind", robot.kindCode},
                      {"sensors", ordered_json::array()},
                      {"collisionShapes", ordered_json::array()}};
  for (const auto& sensor : sensorsOf(robot)) {
    ordered_json listed = sensorToJson(sensor);
    listed["fieldOfView"].erase("rayCount");
    listed["type"] = sensor.type;
    listed["memoryKeys"] = sensor.keys;
    listed["link"] = sensor.link;
    result["sensors"].push_back(listed);
  }
  for (const auto& [name, shape] : robot.collisionShapes) {
    result["collisionShapes"].push_back({{"name", name},
                                         {"kind", Math::getKind(shape->getShape())},
                                         {"joint", shape->getParentJoint()},
                                         {"supported", isSupported(*shape)}});
  }
  return result;
}

ordered_json kindToJson(int kind, const std::vector<ListedSensor>& sensors) {
  ordered_json result{{"kind", kind}};
  for (const auto& sensor : sensors) result["sensors"].push_back(sensorToJson(sensor));
  return result;
}

void listKind(int kind, Format format) {
  const auto sensors = sensorsOfKind(kind);
  if (format == Format::json) {
    std::cout << kindToJson(kind, sensors) << '\n';
  } else {
    printKind(kind, sensors);
  }
}

void listDescription(const std::string& path, Format format) {
  const Model::Robot robot = robot::RobotDescription::fromFile(path).model;
  if (format == Format::json) {
    std::cout << robotToJson(robot) << '\n';
    return;
  }
  printSensors(robot);
  printShapes(robot);
}

}  // namespace

void addListCommand(CLI::App& program) {
  auto options = std::make_shared<CommonOptions>();
  CLI::App* command = program.add_subcommand(
      "list", "Show a robot's sensors by family; of a description its collision shapes, too");
  addRobot(*command, *options);
  addFormat(*command, *options, "table; json: one object");
  command->callback([options] {
    const Format format = parseFormat(options->format, {Format::table, Format::json});
    if (options->robot) {
      listDescription(*options->robot, format);
    } else {
      listKind(options->kind, format);
    }
  });
}

}  // namespace QV::app
