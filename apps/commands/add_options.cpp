#include "apps/commands/add_options.h"

#include <charconv>
#include <limits>

#include <CLI/CLI.hpp>

#include "sensor/core/sensor_health.h"

namespace QV::app {
namespace {

constexpr std::uint64_t kMostPeople = 1000;

}  // namespace

std::function<std::string(const std::string&)> wholeNumber(std::uint64_t least,
                                                           std::uint64_t most) {
  return [least, most](const std::string& text) -> std::string {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && rest == end && number >= least && number <= most) return {};
    return "a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
           " expected, \"" + text + "\" given";
  };
}

std::string namesAFile(const std::string& path) {
  return path.empty() ? "a file name expected, \"\" given" : "";
}

void addRobot(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--kind", options.kind,
                  "a robot with simulated sensors: -1 (one laser all around), 0 (two sonars) or 1 "
                  "(bumpers, sonars, camera)")
      ->type_name("-1|0|1")
      ->capture_default_str();
  command
      .add_option("--robot", options.robot,
                  "a virtual robot with the sensors of a description: porter, or a file (URDF)")
      ->type_name("porter|FILE")
      ->excludes("--kind")
      ->check(namesAFile);
}

void addWorld(CLI::App& command, CommonOptions& options) {
  addRobot(command, options);
  options.heard.addTo(command);
  command
      .add_option("--map", options.map,
                  "map_server map: a YAML file next to its PGM or PNG (default: the project's "
                  "map apartment)")
      ->type_name("apartment|FILE")
      ->check(namesAFile);
  addShift(command, options)->excludes("--from-ros2");
  command.add_option("--seed", options.seed, "seed of the random numbers of the virtual robot")
      ->needs("--robot")
      ->check(wholeNumber(0, std::numeric_limits<std::uint64_t>::max()))
      ->capture_default_str();
  command.add_option("--noise", options.noise, "standard deviation of the noise on each range (m)")
      ->needs("--robot");
  command.add_option("--drop-outs", options.dropOuts, "share of lost ranges, 0 to 1")
      ->needs("--robot");
  command.add_option("--people", options.people, "number of people who walk in the map")
      ->needs("--robot")
      ->check(wholeNumber(0, kMostPeople));
  command
      .add_option("--fault", options.faults,
                  "NAME:KIND[@FROM-TO]: fault of a sensor of --robot, from FROM to TO (s), else "
                  "for ever; KIND is off, stuck, garbage, wrong, slow, delayed or intermittent; "
                  "repeat for more")
      ->allow_extra_args(false)
      ->needs("--robot");
  command
      .add_option("--limit", options.limits,
                  "[NAME:]LIMIT=VALUE, or =off: set a limit of health, for one sensor, a family, "
                  "or all; LIMIT: " +
                      sensor::namesOfHealthLimits() + "; repeat for more")
      ->allow_extra_args(false);
}

CLI::Option* addShift(CLI::App& command, CommonOptions& options) {
  return command
      .add_flag(std::string("--shift-origin{") + kByOrigin + "}", options.shiftOrigin,
                "for a map far from zero, as in UTM coordinates: compute with its zero at its "
                "origin, in whole metres (=X,Y: at X,Y); positions stay in the file's coordinates")
      ->type_name("X,Y");
}

void addSubscriptions(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--subscribe", options.subscriptions,
                  "sensor or family to subscribe to; repeat for more (default: every family)")
      ->allow_extra_args(false);
}

void addPose(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--pose", options.pose,
                  "start pose x,y,theta in the map (m, m, rad; default: a free pose)")
      ->type_name("X,Y,THETA");
}

void addFormat(CLI::App& command, CommonOptions& options, const std::string& formats) {
  const bool givesRecords = formats == kRecordFormats;
  command.add_option("--format", options.format, formats)
      ->type_name(givesRecords ? "table|json|jsonl|csv" : "table|json|jsonl")
      ->capture_default_str();
}

}  // namespace QV::app
