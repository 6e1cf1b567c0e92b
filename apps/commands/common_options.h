#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "apps/ros2/heard_arguments.h"
#include "outlets/internal/json_list.h"
#include "session/open.h"

namespace QV::app {

/** The options that several commands share. */
struct CommonOptions {
  /** The settings that the options leave open. */
  session::OpenOptions robots;
  int kind = 1;
  std::optional<std::string> robot;
  /** The robot of a graph, in place of a simulated or virtual one. */
  HeardArguments heard;
  std::optional<std::string> map;
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
   * Opens the robot of the options, at `start`; else at --pose, else at a free place. Throws
   * UsageError, and the errors of its files.
   */
  std::unique_ptr<session::Session> openSession(
      std::optional<Math::Pose2D> start = std::nullopt,
      session::TimeSource time = session::TimeSource::simulated) const;
  /** Prints on standard error where the robot starts if no pose was given. */
  void notePose(const session::Session& session) const;
  /** Finds where the description lies that --robot names. */
  std::string findRobot() const;
  /** Returns the description of the robot on a graph. */
  std::string describeHeard() const;
  /** Returns the names of --subscribe, or every family. Throws UsageError for an unknown name. */
  std::set<std::string> namesFor(const sensor::SensorManager& manager) const;
};

/** Makes the options of a command, with the defaults of `robots`. */
template <typename Options>
std::shared_ptr<Options> optionsFor(const session::OpenOptions& robots) {
  auto options = std::make_shared<Options>();
  options->robots = robots;
  return options;
}

/** Checks a file name: returns an error for an empty one, else an empty text. */
std::string namesAFile(const std::string& path);

/** Returns a check that gives an error for a text that is no whole number within these limits. */
std::function<std::string(const std::string&)> wholeNumber(std::uint64_t least, std::uint64_t most);

/** The values of --format of commands that give records. */
inline constexpr char kRecordFormats[] =
    "table; json: an array of records; jsonl: a record per line; csv: a point per line";

/** The formats of commands that list. */
inline const std::vector<outlets::Format> kListFormats{
    outlets::Format::table, outlets::Format::json, outlets::Format::jsonl};

/** --kind or --robot. */
void addRobot(CLI::App& command, CommonOptions& options);
/** The same, and the world that the robot stands in. */
void addWorld(CLI::App& command, CommonOptions& options);
void addSubscriptions(CLI::App& command, CommonOptions& options);
void addPose(CLI::App& command, CommonOptions& options);
void addFormat(CLI::App& command, CommonOptions& options, const std::string& formats);

/** Subscribes as the options say and reads once every sensor has had time for a record. */
session::Snapshot readOnce(session::Session& session, const CommonOptions& options);

}  // namespace QV::app
