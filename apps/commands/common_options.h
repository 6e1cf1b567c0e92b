#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "apps/ros2/heard_arguments.h"
#include "session/open.h"
#include "session/usage_error.h"

namespace QV::app {

/** The value of --shift-origin without a value. */
inline constexpr char kByOrigin[] = "origin";

/** The options that several commands share. */
struct CommonOptions {
  /** The settings that the options leave open. */
  session::OpenOptions robots;
  int kind = 1;
  std::optional<std::string> robot;
  /** The robot of a graph, in place of a simulated or virtual one. */
  HeardArguments heard;
  std::optional<std::string> map;
  /** How the map is shifted: not at all, kByOrigin, or "x,y". */
  std::string shiftOrigin;
  std::uint64_t seed = 1;
  float noise = 0.0f;
  float dropOuts = 0.0f;
  int people = 0;
  std::vector<std::string> faults;
  std::vector<std::string> limits;
  std::vector<std::string> subscriptions;
  std::string pose;
  /** Somebody stands before --robot. */
  bool somebodyAhead = false;
  std::string format = "table";

  /**
   * Opens the robot of the options, at `start`; else at --pose, else at a free pose. Throws
   * UsageError, and the errors of its files.
   */
  std::unique_ptr<session::Session> openSession(
      std::optional<Math::Pose2D> start = std::nullopt,
      session::TimeSource time = session::TimeSource::simulated) const;
  /** Prints on standard error where the robot starts if no pose was given. */
  void notePose(const session::Session& session) const;
  /** Finds the shift of --shift-origin. Throws UsageError, and the errors of the map's file. */
  MapShift findShift() const;
  /** Finds the file of --map. */
  std::string findMapFile() const;
  /** Finds where the description lies that --robot names. */
  std::string findRobot() const;
  /** Returns the description of the robot on a graph. */
  std::string describeHeard() const;
  /** Returns the names of --subscribe, or every family. Throws UsageError for an unknown name. */
  std::set<std::string> namesFor(session::Session& session) const;
};

/** Runs the action; a UsageError then begins with the name of `option`. */
template <typename Action>
auto naming(const char* option, const Action& action) {
  try {
    return action();
  } catch (const session::UsageError& error) {
    throw session::UsageError(std::string(option) + ": " + error.what());
  }
}

/** Makes the options of a command, with the defaults of `robots`. */
template <typename Options>
std::shared_ptr<Options> optionsFor(const session::OpenOptions& robots) {
  auto options = std::make_shared<Options>();
  options->robots = robots;
  return options;
}

/** Subscribes as the options say and reads once every sensor has had time for a record. */
session::Snapshot readOnce(session::Session& session, const CommonOptions& options);

}  // namespace QV::app
