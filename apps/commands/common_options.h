#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "apps/run/simulated_robot.h"

namespace QV::app {

/** The options that several commands share. */
struct CommonOptions {
  int kind = 1;
  std::optional<std::string> map;
  std::vector<std::string> subscriptions;
  std::string pose;
  std::string format = "table";

  std::string mapPath() const;
  /** What was subscribed to, or every family. UsageError for a name that doesn't exist. */
  std::set<std::string> namesFor(const sensor::SensorManager& manager) const;
};

/** A check of an option's value: what is wrong with an empty one, nothing for any other. */
std::string namesAFile(const std::string& path);

void addKind(CLI::App& command, CommonOptions& options);
void addMap(CLI::App& command, CommonOptions& options);
void addSubscriptions(CLI::App& command, CommonOptions& options);
void addPose(CLI::App& command, CommonOptions& options);

/** One reading at the pose of the options. */
struct Reading {
  Math::Pose2D pose;
  std::vector<Math::MetricalData> records;
};

Reading readOnce(SimulatedRobot& robot, const CommonOptions& options);

}  // namespace QV::app
