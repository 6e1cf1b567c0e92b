#include "apps/commands/common_options.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/arguments.h"
#include "apps/run/pose_watch.h"
#include "apps/shared_files.h"
#include "apps/usage_error.h"
#include "sensor/core/scoped_subscription.h"

namespace QV::app {

std::string CommonOptions::mapPath() const {
  if (!map) return findSharedFile("maps/apartment.yaml");
  return *map;
}

std::set<std::string> CommonOptions::namesFor(const sensor::SensorManager& manager) const {
  const std::set<std::string> names(subscriptions.begin(), subscriptions.end());
  checkNames(manager, names);
  return names.empty() ? manager.getFamilyNames() : names;
}

std::string namesAFile(const std::string& path) {
  return path.empty() ? "a file expected, an empty name given" : "";
}

void addKind(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--kind", options.kind,
                  "robot kind: -1 (a perfect laser), 0 (two sonars) or 1 (bumpers, sonars, camera)")
      ->capture_default_str();
}

void addMap(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--map", options.map,
                  "map_server map: a YAML file beside its PGM or PNG (default: the project's own)")
      ->check(namesAFile);
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

Reading readOnce(SimulatedRobot& robot, const CommonOptions& options) {
  const Math::Pose2D pose = parsePose(options.pose);
  if (const auto warning = PoseWatch(robot.getMap()).look(pose)) std::cerr << *warning << '\n';
  robot.setPose(pose);
  auto& manager = robot.getManager();
  const sensor::ScopedSubscription subscription(manager, "qvsensors", options.namesFor(manager));
  return {pose, manager.getMetricalData()};
}

}  // namespace QV::app
