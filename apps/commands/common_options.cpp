#include "apps/commands/common_options.h"

#include <cmath>
#include <iostream>
#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>

#include "apps/arguments.h"
#include "robot/maps/map_files.h"
#include "sensor/core/scoped_subscription.h"
#include "session/internal/find_room.h"
#include "session/internal/pose_watch.h"
#include "session/shared_files.h"
#include "session/simulated_session.h"
#include "session/usage_error.h"
#include "session/virtual_session.h"

namespace QV::app {
namespace {

std::string joined(const std::set<std::string>& names) {
  std::string result;
  for (const std::string& name : names) result += (result.empty() ? "" : ", ") + name;
  return result;
}

std::string mapPathOf(const CommonOptions& options) {
  if (!options.map) return session::findSharedFile("maps/apartment.yaml");
  return *options.map;
}

void expect(bool isSo, const char* expected) {
  if (!isSo) throw session::UsageError(std::string(expected) + " expected");
}

robot::WorldOptions worldOf(const CommonOptions& options, const Math::Pose2D& start) {
  constexpr float kDistance = 1.2f;
  expect(options.noise >= 0.0f && std::isfinite(options.noise), "--noise: metres from 0 on");
  expect(options.dropOuts >= 0.0f && options.dropOuts <= 1.0f, "--drop-outs: a share from 0 to 1");
  expect(options.people >= 0, "--people: a number from 0 on");
  robot::WorldOptions world;
  world.start = start;
  world.seed = options.seed;
  world.rangeNoise = options.noise;
  world.dropOuts = options.dropOuts;
  world.randomPeople = options.people;
  if (options.somebodyAhead) {
    world.people.push_back({{start * Math::Position2D(kDistance, 0.0f)}});
  }
  return world;
}

void setFaults(session::VirtualSession& run, const std::vector<std::string>& faults) {
  try {
    for (const std::string& text : faults) run.setFault(robot::parseFault(text));
  } catch (const std::invalid_argument& error) {
    // It begins with the word "fault", as the option does.
    throw session::UsageError(std::string("--").append(error.what()));
  }
}

std::unique_ptr<session::Session> makeVirtualSession(const CommonOptions& options, OccupancyMap map,
                                                     const Math::Pose2D& start) {
  const auto description = robot::RobotDescription::fromFile(*options.robot);
  const robot::WorldOptions world = worldOf(options, start);
  std::unique_ptr<session::VirtualSession> run;
  try {
    run = std::make_unique<session::VirtualSession>(description, std::move(map), world);
  } catch (const std::exception& error) {
    throw session::UsageError(*options.robot + " in " + mapPathOf(options) + ": " + error.what());
  }
  setFaults(*run, options.faults);
  return run;
}

}  // namespace

std::unique_ptr<session::Session> CommonOptions::makeRun(std::optional<Math::Pose2D> start) const {
  if (!robot) session::checkKind(kind);
  if (!start && !pose.empty()) start = parsePose(pose);
  OccupancyMap world = robot::loadMap(mapPathOf(*this));
  if (!start) start = session::findRoom(world);
  if (robot) return makeVirtualSession(*this, std::move(world), *start);
  return std::make_unique<session::SimulatedSession>(kind, std::move(world), *start);
}

std::set<std::string> CommonOptions::namesFor(const sensor::SensorManager& manager) const {
  const std::set<std::string> names(subscriptions.begin(), subscriptions.end());
  for (const std::string& name : names) {
    if (manager.isFamily(name) || manager.isSensor(name)) continue;
    throw session::UsageError(
        "--subscribe: no sensor or family \"" + name + "\"; this robot has the families " +
        joined(manager.getFamilyNames()) + " and the sensors " + joined(manager.getSensorList()));
  }
  return names.empty() ? manager.getFamilyNames() : names;
}

std::string namesAFile(const std::string& path) {
  return path.empty() ? "a file expected, an empty name given" : "";
}

void addRobot(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--kind", options.kind,
                  "a robot with simulated sensors: -1 (a perfect laser), 0 (two sonars) or 1 "
                  "(bumpers, sonars, camera)")
      ->capture_default_str();
  command
      .add_option("--robot", options.robot,
                  "a virtual robot with the sensors of a description (URDF)")
      ->excludes("--kind")
      ->check(namesAFile);
}

void addWorld(CLI::App& command, CommonOptions& options) {
  addRobot(command, options);
  command
      .add_option("--map", options.map,
                  "map_server map: a YAML file beside its PGM or PNG (default: the project's own)")
      ->check(namesAFile);
  command.add_option("--seed", options.seed, "of all chance in the world of --robot")
      ->needs("--robot")
      ->capture_default_str();
  command.add_option("--noise", options.noise, "standard deviation of each range of --robot (m)")
      ->needs("--robot");
  command
      .add_option("--drop-outs", options.dropOuts, "share of the ranges of --robot that are lost")
      ->needs("--robot");
  command.add_option("--people", options.people, "people who walk about --robot")->needs("--robot");
  command
      .add_option("--fault", options.faults,
                  "NAME:KIND[@FROM-TO]: a sensor of --robot is off, stuck, garbage, wrong, slow, "
                  "delayed or intermittent, for the time (s) or for good; repeat for more")
      ->allow_extra_args(false)
      ->needs("--robot");
}

void addSubscriptions(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--subscribe", options.subscriptions,
                  "sensor or family to subscribe to; repeat for more (default: every family)")
      ->allow_extra_args(false);
}

void addPose(CLI::App& command, CommonOptions& options) {
  command.add_option("--pose", options.pose, "robot pose x,y,theta in the map (m, rad)")
      ->required();
}

void addOptionalPose(CLI::App& command, CommonOptions& options) {
  command.add_option("--pose", options.pose,
                     "robot pose x,y,theta in the map (m, rad; default: where there is room)");
}

void addFormat(CLI::App& command, CommonOptions& options, const std::string& formats) {
  command.add_option("--format", options.format, formats)->capture_default_str();
}

std::vector<Math::MetricalData> readOnce(session::Session& robot, ko::SimulatedTime& time,
                                         const CommonOptions& options) {
  if (const auto warning = session::PoseWatch(robot.getMap()).look(robot.getPose())) {
    std::cerr << *warning << '\n';
  }
  auto& manager = robot.getManager();
  const sensor::ScopedSubscription subscription(manager, "qvsensors", options.namesFor(manager));
  time.advance(robot.getSettlingTime());
  return manager.getMetricalData();
}

}  // namespace QV::app
