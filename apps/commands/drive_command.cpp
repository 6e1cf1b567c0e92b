#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>

#include "apps/arguments.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/number_text.h"
#include "apps/output/progress_bar.h"
#include "apps/output/record_output.h"
#include "apps/picture/run_picture.h"
#include "apps/run/path_follower.h"
#include "apps/run/pose_watch.h"
#include "apps/run/run_summary.h"
#include "apps/usage_error.h"
#include "platform/ko/simulated_time.h"
#include "sensor/core/scoped_subscription.h"

namespace QV::app {
namespace {

struct DriveOptions : CommonOptions {
  std::string path;
  double rate = 10.0;
  double speed = 0.5;
  double turnSpeed = 1.0;
  std::string output;
  std::string picture;
};

// An hour of a fast robot at a high rate fits; a slip of the finger does not.
constexpr double kMostCycles = 1e7;

void checkAbove0(const char* option, double value, double most) {
  if (value > 0.0 && value <= most) return;
  throw UsageError(std::string(option) + ": a number above 0 and up to " +
                   std::to_string(static_cast<long>(most)) + " expected, " + fixed(value, 3) +
                   " given");
}

/** The file that records go to, if one was asked for; whole lines even when the run is interrupted.
 */
class RecordFile {
 public:
  explicit RecordFile(const std::string& path) : path(path) {
    if (path.empty()) return;
    file.open(path);
    xCheck();
  }

  void write(const std::vector<Math::MetricalData>& records) {
    if (path.empty()) return;
    writeRecords(file, records, Format::json, "map");
    xCheck();
  }

  void close() {
    if (path.empty()) return;
    file.close();
    xCheck();
  }

 private:
  void xCheck() const {
    if (!file) throw std::runtime_error(path + ": can't be written");
  }

  std::string path;
  std::ofstream file;
};

struct Run {
  std::vector<Math::Pose2D> poses;
  std::vector<Math::MetricalData> lastRecords;
  RunSummary summary;
};

Run driveAlong(const PathFollower& follower, const DriveOptions& options, SimulatedRobot& robot) {
  auto& manager = robot.getManager();
  const sensor::ScopedSubscription subscription(manager, "qvsensors", options.namesFor(manager));
  RecordFile file(options.output);
  ProgressBar progress("Driving");
  ko::SimulatedTime time;
  Run run;
  const auto cycles = static_cast<long>(std::ceil(follower.getDuration() * options.rate));
  PoseWatch watch(robot.getMap());
  // One cycle in any case, so that there is something to show.
  for (long cycle = 0; cycle <= cycles && (cycle == 0 || !isInterrupted()); ++cycle) {
    const auto elapsed =
        ko::Duration(std::llround(1e9 * static_cast<double>(cycle) / options.rate));
    time.advance(ko::Clock::time_point(elapsed) - ko::Clock::now());
    run.poses.push_back(follower.poseAt(static_cast<double>(cycle) / options.rate));
    if (const auto warning = watch.look(run.poses.back())) progress.note(*warning);
    robot.setPose(run.poses.back());
    run.lastRecords = manager.getMetricalData();
    run.summary.add(run.lastRecords);
    file.write(run.lastRecords);
    progress.show(static_cast<double>(cycle) / static_cast<double>(cycles));
  }
  file.close();
  return run;
}

void drive(const DriveOptions& options) {
  checkAbove0("--rate", options.rate, 1e6);
  checkAbove0("--speed", options.speed, 1e3);
  checkAbove0("--turn-speed", options.turnSpeed, 1e3);
  const PathFollower follower(parsePath(options.path), options.speed, options.turnSpeed);
  if (follower.getDuration() * options.rate > kMostCycles) {
    throw UsageError(
        "--path: at most 10000000 cycles expected; drive less far, faster, or at a "
        "lower --rate");
  }
  if (!options.picture.empty()) checkPicturePath(options.picture);
  SimulatedRobot robot(options.kind, options.mapPath());
  const Run run = driveAlong(follower, options, robot);
  std::cout << (isInterrupted() ? "Interrupted after " : "Drove ") << run.poses.size()
            << " cycles at " << options.rate << " Hz of simulated time.\n";
  run.summary.print(std::cout);
  if (!options.output.empty()) std::cout << "Wrote " << options.output << '\n';
  if (options.picture.empty()) return;
  writePicture({robot.getMap(), run.poses, run.lastRecords,
                "Simulated robot of kind " + std::to_string(options.kind)},
               options.picture);
  std::cout << "Wrote " << options.picture << '\n';
}

}  // namespace

void addDriveCommand(CLI::App& program) {
  auto options = std::make_shared<DriveOptions>();
  CLI::App* command =
      program.add_subcommand("drive", "Drive a path through the map and read at every cycle");
  addMap(*command, *options);
  addKind(*command, *options);
  command->add_option("--path", options->path, "positions \"x,y x,y ...\" in the map (m)")
      ->required();
  addSubscriptions(*command, *options);
  command->add_option("--rate", options->rate, "readings per second of simulated time")
      ->capture_default_str();
  command->add_option("--speed", options->speed, "m/s")->capture_default_str();
  command->add_option("--turn-speed", options->turnSpeed, "rad/s, on the spot at each corner")
      ->capture_default_str();
  command->add_option("-o,--output", options->output, "file for the records, one JSON per line")
      ->check(namesAFile);
  command->add_option("--picture", options->picture, "PNG of the run")->check(namesAFile);
  command->callback([options] { drive(*options); });
}

}  // namespace QV::app
