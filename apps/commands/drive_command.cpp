#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>

#include "apps/arguments.h"
#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/output/notes.h"
#include "apps/output/progress_bar.h"
#include "apps/output/session_summary.h"
#include "apps/replay/machine_pace.h"
#include "apps/ros2/graph_option.h"
#include "apps/silent_sensors.h"
#include "apps/subscriber.h"
#include "outlets/outlet.h"
#include "session/internal/number_text.h"
#include "session/internal/pose_watch.h"
#include "session/internal/seconds.h"
#include "session/internal/timed_path.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

struct DriveOptions : CommonOptions {
  std::string path;
  /** The corners of the path, in the map as it is held. */
  std::vector<Math::Position2D> corners;
  double rate = 10.0;
  double speed = 0.5;
  double turnSpeed = 1.0;
  OutputFiles output;
  OutputFiles picture;
  GraphOption graph;
  std::optional<double> pace;
};

// An hour of a fast robot at a high rate fits; a slip of the finger does not.
constexpr double kMostCycles = 1e7;

void checkAbove0(const char* option, double value, double most) {
  if (value > 0.0 && value <= most) return;
  throw session::UsageError(std::string(option) + ": a number above 0 and up to " +
                            std::to_string(static_cast<long>(most)) + " expected, " +
                            session::shortest(value) + " given");
}

struct Run {
  long cycles = 0;
  SessionSummary summary;
  session::Snapshot last;
};

void openOutlets(DriveOptions& options, session::Session& session, outlets::OutletList& list) {
  for (OutputFiles* files : {&options.output, &options.picture}) files->open(session, list, false);
  if (const auto robot = options.graph.getOutlet()) list.add(robot);
}

/** Runs the session up to given times; commands of a graph are executed meanwhile. */
class SessionClock {
 public:
  SessionClock(DriveOptions& options, session::Session& session, outlets::Outlet& outlet)
      : graph(options.graph), session(session), outlet(outlet), pace(xPaceOf(options)) {}

  void goTo(ko::Clock::time_point time) {
    if (!graph.isAsked()) return xRunTo(time);
    for (auto now = ko::Clock::now(); now < time && !isInterrupted(); now = ko::Clock::now()) {
      graph.obey();
      session.setDemand(outlet.getDemand());
      xRunTo(std::min<ko::Clock::time_point>(now + kPart, time));
    }
  }

 private:
  static constexpr ko::Duration kPart{20'000'000};

  static std::optional<double> xPaceOf(const DriveOptions& options) {
    if (!options.pace && options.graph.isAsked()) return 1.0;
    return options.pace;
  }

  void xRunTo(ko::Clock::time_point time) {
    session.run(time - ko::Clock::now());
    pace.await(session::inSeconds(time.time_since_epoch()));
  }

  GraphOption& graph;
  session::Session& session;
  outlets::Outlet& outlet;
  MachinePace pace;
};

// The drive goes on at the path's end until the last records are from there.
long countCycles(double pathSeconds, const session::Session& session, double rate) {
  const double atEnd = session::inSeconds(session.getSettlingTime());
  return static_cast<long>(std::ceil((pathSeconds + atEnd) * rate));
}

ko::Clock::time_point timeOfCycle(ko::Clock::time_point start, long cycle, double rate) {
  return start + ko::Duration(std::llround(1e9 * static_cast<double>(cycle) / rate));
}

bool isSimulated(const DriveOptions& options) {
  return !options.robot && !options.heard.asked;
}

/** Warns once of a path that leads where no robot can stand. A simulated robot follows it. */
void warnOfWalls(const std::vector<Math::Position2D>& path, const OccupancyMap& map) {
  session::PoseWatch watch(map);
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    const double x = path[i].x;
    const double y = path[i].y;
    const double dx = path[i + 1].x - x;
    const double dy = path[i + 1].y - y;
    const double steps = 1.0 + std::ceil(2.0 * std::hypot(dx, dy) / map.getResolution());
    for (double step = 0.0; step <= steps; ++step) {
      const double share = step / steps;
      if (const auto warning = watch.look(
              {static_cast<float>(x + share * dx), static_cast<float>(y + share * dy), 0.0f}))
        return note(*warning + "; a robot of --kind drives on, through walls too");
    }
  }
}

Run driveAlong(DriveOptions& options, session::Session& session, outlets::Outlet& outlet) {
  session.subscribe(kSubscriber, options.namesFor(session));
  session.setDemand(outlet.getDemand());
  SessionClock clock(options, session, outlet);
  clock.goTo(ko::Clock::now() + session.getSettlingTime());
  ProgressBar progress("Driving");
  session::PoseWatch watch(*session.getMap());
  const bool isVirtual = options.robot && !options.heard.asked;
  if (isSimulated(options)) warnOfWalls(options.corners, *session.getMap());
  Run run;
  const auto start = ko::Clock::now();
  const double seconds = session.follow(options.corners, options.speed, options.turnSpeed);
  const long cycles = countCycles(seconds, session, options.rate);
  // At least one cycle runs, so that there is something to show.
  for (; run.cycles <= cycles && (run.cycles == 0 || !isInterrupted()); ++run.cycles) {
    clock.goTo(timeOfCycle(start, run.cycles, options.rate));
    const session::Snapshot snapshot = session.look();
    run.last = snapshot;
    const auto warning = watch.look(snapshot.pose);
    if (warning && isVirtual && !isQuiet()) progress.note(getProgramName() + ": " + *warning);
    run.summary.add(snapshot);
    outlet.show(snapshot);
    progress.show(static_cast<double>(run.cycles) / static_cast<double>(cycles));
  }
  return run;
}

session::TimedPath checkedPath(const DriveOptions& options) {
  checkAbove0("--rate", options.rate, 1e6);
  checkAbove0("--speed", options.speed, 1e3);
  checkAbove0("--turn-speed", options.turnSpeed, 1e3);
  if (options.pace) checkAbove0("--pace", *options.pace, 1e3);
  session::TimedPath path(options.corners, options.speed, options.turnSpeed);
  if (path.getDuration() * options.rate <= kMostCycles) return path;
  throw session::UsageError(
      "--path: this drive would take more than 10000000 readings; shorten it, raise --speed or "
      "lower --rate");
}

std::string whyAstray(const session::Snapshot& last, const Math::Pose2D& goal, bool isHeard) {
  // A robot on a graph may be in another world than its map shows.
  if (isHeard) return "an obstacle blocks it, --speed is too high, or it does not obey /cmd_vel";
  if (!last.map) return "an obstacle blocks it";
  const auto occupancy = last.map->findOccupancy(Math::position2DFromPose2D(goal));
  if (!occupancy) return "the end of the path lies outside the map";
  if (*occupancy > OccupancyMap::kSolidAbove) return "the end of the path is not free";
  return "an obstacle blocks it, or --speed is too high";
}

/** True if the robot arrived. */
bool checkArrival(const session::TimedPath& path, const session::Snapshot& last, bool isHeard) {
  const Math::Pose2D goal = path.poseAt(path.getDuration());
  const Math::Pose2D off = Math::pinv(goal) * last.pose;
  const float metres = std::hypot(off.x, off.y);
  if (isInterrupted() || metres < 0.1f) return true;
  complain("warning: the robot stands " + session::fixed(metres, 2) +
           " m from the end of the path: " + whyAstray(last, goal, isHeard));
  return false;
}

/** Returns false if an output is incomplete. */
bool printSummary(const DriveOptions& options, const Run& run, const SilentSensors& silent) {
  std::ostream& out = options.output.getSummaryStream();
  out << (isInterrupted() ? "Interrupted after " : "Drove for ") << run.cycles << " readings ("
      << options.rate << " Hz of session time).\n";
  run.summary.print(out, silent);
  const bool isWhole = options.output.report(out);
  return options.picture.report(out) && isWhole;
}

int drive(DriveOptions& options) {
  options.corners = parsePath(options.path, options.findShift());
  const session::TimedPath path = checkedPath(options);
  options.picture.checkIsPicture();
  const auto session = options.openSession(path.poseAt(0.0));
  catchInterrupts();
  const GraphScope onGraph = options.graph.open(*session, false);
  outlets::OutletList outlets;
  openOutlets(options, *session, outlets);
  const Run run = driveAlong(options, *session, outlets);
  outlets.finish();
  const bool hasArrived = checkArrival(path, run.last, options.heard.asked);
  const auto silent = findSilent(*session, options.subscriptions, run.last, run.summary.getHeard());
  if (!printSummary(options, run, silent)) return kIncomplete;
  return reportSilent(silent) == 0 && hasArrived ? 0 : kNotAll;
}

}  // namespace

void addDriveCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<DriveOptions>(robots);
  CLI::App* command = program.add_subcommand(
      "drive", "Drive a path through the map and read the sensors on the way");
  command->footer(
      "With --kind the robot follows the path also through walls, and the program says where; a\n"
      "virtual robot stops at them. The exit status is 1 if the robot did not reach the end of "
      "the\n"
      "path, or a subscribed sensor gave no record and is not sound.");
  addWorld(*command, *options);
  command->add_option("--path", options->path, "positions \"x,y x,y ...\" in the map (m)")
      ->type_name("X,Y...")
      ->required();
  addSubscriptions(*command, *options);
  command->add_option("--rate", options->rate, "readings per second of session time")
      ->capture_default_str();
  command->add_option("--speed", options->speed, "m/s")->capture_default_str();
  command->add_option("--turn-speed", options->turnSpeed, "rad/s, on the spot at each corner")
      ->capture_default_str();
  options->output.addOption(
      *command, "-o,--output",
      "file: .mcap is a recording of the whole session, .png a picture of it, .csv "
      "has a line per point, any other name one JSON per record; - is "
      "standard output");
  options->picture.addOption(*command, "--picture", "PNG of the session");
  command->add_option("--pace", options->pace,
                      "speed: seconds of the session per second of real time (default: as fast as "
                      "possible; 1 with --ros2)");
  options->graph.addTo(*command, &options->heard.joining);
  command->callback([options, &status] { status = drive(*options); });
}

}  // namespace QV::app
