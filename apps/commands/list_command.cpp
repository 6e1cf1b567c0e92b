#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/listed_json.h"
#include "apps/output/health_text.h"
#include "apps/output/lines.h"
#include "apps/output/quiet_log.h"
#include "apps/subscriber.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/internal/table.h"
#include "outlets/internal/json_values.h"
#include "platform/ko/internal/write_error.h"
#include "robot/world/robot_description.h"
#include "session/internal/listed_sensor.h"
#include "session/internal/number_text.h"

namespace QV::app {
namespace {

using nlohmann::ordered_json;

struct ListOptions : CommonOptions {
  bool wantsHealth = false;
  std::string saved;
};

/** Returns a number as text; "-" for a sensor that is not in the description. */
template <typename Number>
std::string orDash(const session::ListedSensor& sensor, Number value, int digits) {
  if (sensor.describedAs.empty()) return "-";
  return session::fixed(static_cast<float>(value), digits);
}

std::string typeOf(const session::ListedSensor& sensor) {
  return sensor.typeName.empty() ? orDash(sensor, sensor.type, 0) : sensor.typeName;
}

void printKind(int kind, const std::vector<session::ListedSensor>& sensors) {
  std::cout << "Simulated sensors of kind " << kind
            << ".\nMounting in the ground frame (m, rad), ranges in m, apertures in rad.\n";
  outlets::Table table(
      {"family", "sensor", ">min", ">max", ">aperture", ">rays", ">x", ">y", ">heading"});
  for (const auto& sensor : sensors) {
    const auto& fov = sensor.fieldOfView;
    table.add({sensor.family, sensor.name, session::shortest(fov.minRange),
               session::shortest(fov.maxRange), session::fixed(fov.angularRange, 3),
               std::to_string(fov.rayCount), session::fixed(sensor.position.x, 2),
               session::fixed(sensor.position.y, 2), session::fixed(sensor.heading, 3)});
  }
  table.dropFirst({"rays", "aperture"});
  table.print(std::cout, getLineWidth());
}

std::string noteOn(const session::ListedSensor& sensor) {
  if (!sensor.canBeBuilt) return "can't be built";
  if (sensor.describedAs.empty()) return "not in the description";
  return sensor.name == sensor.describedAs ? "" : "described as " + sensor.describedAs;
}

void printSensors(const robot::RobotDescription& description, const session::OpenOptions& robots) {
  const Model::Robot& robot = description.model;
  std::cout << "Robot " << robot.name << " of kind " << robot.kindCode
            << ".\nMounting in the link's frame (m, rad), ranges in m, apertures in rad.\n";
  outlets::Table table({"family", "sensor", "type", ">min", ">max", ">aperture", ">keys", "link",
                        ">x", ">y", ">z", ">heading", ""});
  for (const auto& sensor : session::sensorsOf(description, robots)) {
    const auto& fov = sensor.fieldOfView;
    const auto& at = sensor.position;
    table.add({sensor.family.empty() ? "(none)" : sensor.family, sensor.name, typeOf(sensor),
               orDash(sensor, fov.minRange, 2), orDash(sensor, fov.maxRange, 2),
               orDash(sensor, fov.angularRange, 3), orDash(sensor, sensor.keys, 0), sensor.link,
               orDash(sensor, at.x, 2), orDash(sensor, at.y, 2), orDash(sensor, at.z, 2),
               orDash(sensor, sensor.heading, 3), noteOn(sensor)});
  }
  table.dropFirst({"keys", "type", "aperture", "z", "link", "heading", "y", "x", "min"});
  table.print(std::cout, getLineWidth());
  std::cout << "Both names, family and sensor, can be used with --subscribe.\n";
}

void printShapes(const Model::Robot& robot) {
  std::cout << "\nCollision shapes\n";
  outlets::Table table({"name", "shape", "joint", ""});
  for (const auto& [name, shape] : robot.collisionShapes) {
    table.add({name, Math::getKind(shape->getShape()),
               shape->getParentJoint().empty() ? "(root)" : shape->getParentJoint(),
               isSupported(*shape) ? "" : "not supported"});
  }
  table.print(std::cout, getLineWidth());
}

/** JSON: the object. JSON lines: its sensors, one each. */
void printObject(const ordered_json& object, outlets::Format format) {
  if (format == outlets::Format::json) std::cout << outlets::toText(object) << '\n';
  outlets::JsonList list(std::cout, outlets::Format::jsonl);
  if (format != outlets::Format::jsonl) return;
  for (const auto& sensor : object["sensors"]) list.add(sensor);
}

void listKind(int kind, outlets::Format format) {
  const auto sensors = session::sensorsOfKind(kind);
  if (format == outlets::Format::table) return printKind(kind, sensors);
  printObject(kindToJson(kind, sensors), format);
}

/** Runs every sensor for three seconds of simulated time and prints its health. */
void listHealth(const CommonOptions& options, outlets::Format format) {
  const QuietLog quiet;
  const auto session = options.openSession();
  session->subscribe(kSubscriber, session->getManager().getFamilyNames());
  options.notePose(*session);
  session->run(boost::chrono::seconds(3));
  outlets::JsonList list(std::cout, format);
  outlets::Table table({"sensor", "health", "reason", "remedy"});
  for (const auto& [name, health] : session->getManager().getHealth()) {
    table.add({name, getName(health.state), healthText(health, ko::Clock::now()), health.remedy});
    list.add({{"sensorName", name}, {"health", outlets::toJson(health)}});
  }
  list.finish();
  table.dropFirst({"remedy"});
  if (format == outlets::Format::table) table.print(std::cout, getLineWidth());
}

robot::RobotDescription listedRobot(const CommonOptions& options) {
  const auto& kinds = options.robots.sensors.getKinds();
  if (!options.heard.asked) return robot::RobotDescription::fromFile(options.findRobot(), kinds);
  const QuietLog quiet;
  return robot::RobotDescription(options.describeHeard(), kinds);
}

void save(const robot::RobotDescription& description, const std::string& path) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << description.xml << std::flush;
  if (!file) throw std::runtime_error(ko::detail::cannotWrite(path));
}

void listDescription(const ListOptions& options, outlets::Format format) {
  const session::OpenOptions& robots = options.robots;
  const auto description = listedRobot(options);
  if (!options.saved.empty()) save(description, options.saved);
  // The list names sensors that can't be built, so the log stays quiet.
  const QuietLog quiet;
  if (format != outlets::Format::table)
    return printObject(robotToJson(description, robots), format);
  printSensors(description, robots);
  printShapes(description.model);
}

}  // namespace

void addListCommand(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<ListOptions>(robots);
  CLI::App* command = program.add_subcommand(
      "list", "Show a robot's sensors by family, and a description's collision shapes");
  CLI::Option* health =
      command->add_flag("--health", options->wantsHealth, "show each sensor's health after 3 s");
  addWorld(*command, *options);
  addPose(*command, *options);
  for (const char* name : {"--map", "--shift-origin", "--pose", "--seed", "--noise", "--drop-outs",
                           "--people", "--fault", "--limit"}) {
    command->get_option(name)->needs(health);
  }
  command->add_option("--save", options->saved, "file for the description of --from-ros2 (URDF)")
      ->needs("--from-ros2")
      ->excludes(health)
      ->type_name("FILE")
      ->check(namesAFile);
  addFormat(*command, *options,
            "table; json: one object, with --health an array; jsonl: a sensor per line");
  command->callback([options] {
    const outlets::Format format = outlets::parseFormat(options->format, kListFormats);
    if (options->wantsHealth) {
      listHealth(*options, format);
    } else if (options->robot || options->heard.asked) {
      listDescription(*options, format);
    } else {
      listKind(options->kind, format);
    }
  });
}

}  // namespace QV::app
