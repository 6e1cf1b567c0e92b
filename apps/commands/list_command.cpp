#include <algorithm>
#include <iostream>
#include <memory>
#include <numbers>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/number_text.h"
#include "apps/output/table.h"
#include "apps/run/description_file.h"
#include "platform/model/number_text.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/real/sensor_family.h"

namespace QV::app {
namespace {

// At the origin, and without a map, a record's transform is the sensor's mounting.
std::vector<Math::MetricalData> mountings(int kind) {
  sensor::SimulatedSensorManager manager(kind, nullptr);
  const sensor::ScopedSubscription subscription(manager, "qvsensors");
  return manager.getMetricalData();
}

// Half a turn comes back from a transform with either sign.
float headingOf(const Math::Pose2D& pose) {
  constexpr float kPi = std::numbers::pi_v<float>;
  return pose.theta < -kPi + 1e-5f ? pose.theta + 2.0f * kPi : pose.theta;
}

std::string inFamily(const Model::SensorConfig& config) {
  const std::string family = sensor::familyOfType(config.type);
  return family.empty() ? "(none)" : family;
}

void listSensors(const Model::Robot& robot) {
  std::cout << "Robot " << robot.name << " of kind " << robot.kindCode
            << ". Mounting in the link's frame (m, rad), ranges in m, apertures in rad.\n";
  Table table({"family", "sensor", ">type", ">min", ">max", ">aperture", ">keys", "link", ">x",
               ">y", ">z", ">heading"});
  for (const auto& [name, config] : robot.sensorConfigs) {
    const auto number = [&config](const char* key, int decimals) {
      const auto found = config.properties.find(key);
      return fixed(found == config.properties.end() ? 0.0 : Model::atofC(found->second), decimals);
    };
    const auto at = Math::position3DFromTransform(config.origin);
    table.add({inFamily(config), name, std::to_string(config.type),
               number("minimumDetectionDistance", 2), number("maximumDetectionDistance", 2),
               number("horizontalAngularRange", 3), std::to_string(config.memoryKeys.size()),
               config.parentLink, fixed(at.x, 2), fixed(at.y, 2), fixed(at.z, 2),
               fixed(headingOf(Math::pose2DFromTransform(config.origin)), 3)});
  }
  table.print(std::cout);
}

void listShapes(const Model::Robot& robot) {
  std::cout << "\nCollision shapes\n";
  Table table({"shape", "kind", "joint", ""});
  for (const auto& [name, shape] : robot.collisionShapes) {
    const bool supported = !std::holds_alternative<Math::UnsupportedShape>(shape->getShape());
    table.add({name, Math::getKind(shape->getShape()),
               shape->getParentJoint().empty() ? "(root)" : shape->getParentJoint(),
               supported ? "" : "not supported"});
  }
  table.print(std::cout);
}

void listDescription(const std::string& path) {
  const Model::Robot robot = readDescription(path);
  listSensors(robot);
  listShapes(robot);
}

void listKind(const CommonOptions& options) {
  checkKind(options.kind);
  std::cout << "Simulated sensors of kind " << options.kind
            << ". Mounting in the robot's frame (m, rad), ranges in m, apertures in rad.\n";
  Table table({"family", "sensor", ">min", ">max", ">aperture", ">rays", ">x", ">y", ">theta"});
  auto records = mountings(options.kind);
  std::stable_sort(records.begin(), records.end(),
                   [](const auto& a, const auto& b) { return a.familyName < b.familyName; });
  for (const auto& record : records) {
    const auto& fov = record.fieldOfView;
    const auto pose = Math::pose2DFromTransform(record.sensorTransform);
    table.add({record.familyName, record.sensorName, shortest(fov.minRange), shortest(fov.maxRange),
               fixed(fov.angularRange, 3), std::to_string(fov.rayCount), fixed(pose.x, 2),
               fixed(pose.y, 2), fixed(headingOf(pose), 3)});
  }
  table.print(std::cout);
}

}  // namespace

void addListCommand(CLI::App& program) {
  auto options = std::make_shared<CommonOptions>();
  CLI::App* command = program.add_subcommand("list", "Show a robot's sensors by family");
  auto description = std::make_shared<std::string>();
  addKind(*command, *options);
  command
      ->add_option("--robot", *description,
                   "robot description (URDF): its sensors, families and collision shapes")
      ->excludes("--kind")
      ->check(namesAFile);
  command->callback([options, description] {
    if (description->empty()) {
      listKind(*options);
    } else {
      listDescription(*description);
    }
  });
}

}  // namespace QV::app
