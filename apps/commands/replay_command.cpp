#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/output/lines.h"
#include "apps/output/progress_bar.h"
#include "apps/output/session_summary.h"
#include "apps/replay/machine_pace.h"
#include "apps/replay/played_session.h"
#include "apps/ros2/graph_option.h"
#include "apps/subscriber.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/record_file.h"
#include "platform/ko/log.h"
#include "session/open.h"
#include "session/shared_files.h"

namespace QV::app {
namespace {

constexpr char kReplayFooter[] =
    "RUN is one of:\n"
    "- a recording of this program (.mcap): the drivers' data goes into the robot's modules "
    "again,\n"
    "  and the library makes its records anew;\n"
    "- a recording of another robot (.mcap, .db3 or a folder of rosbag2): LaserScan, Range, depth\n"
    "  Image, PointCloud2, tf and odometry go to sensors that are derived from the topics;\n"
    "- a CARMEN log of a lidar (FLASER and ODOM lines);\n"
    "- a sonar log: lines of a time (ms) and 8 ranges (mm). Its poses are lines of a time (ms), "
    "x,\n"
    "  y (mm) and heading (0.1 degrees).\n"
    "The program finds the type from the content. Times count from the first step.";

struct ReplayOptions {
  sensor::SensorFactory sensors;
  std::string run;
  std::optional<std::string> poses;
  OutputFiles output;
  GraphOption graph;
  std::string format = "table";
  bool compare = false;
  double from = 0.0;
  std::optional<double> to;
  std::optional<double> speed;
  bool loop = false;
};

/** Counts snapshots, and those whose records differ from the recorded ones. */
struct Verdict {
  std::size_t looks = 0;
  std::size_t differing = 0;
  std::string first = {};
  std::uint64_t missing = 0;
  bool isDamaged = false;
};

/** Called at each step within the options' span, or at the end. */
using Take = std::function<void(PlayedSession&)>;

void showOnGraph(GraphOption& graph, const PlayedSession& run) {
  graph.obey();
  const auto robot = graph.getOutlet();
  if (robot && robot->isWatched()) robot->show(run.look());
}

/** Returns real time for a graph, so that other nodes can keep up. */
std::optional<double> speedOf(const ReplayOptions& options) {
  if (!options.speed && options.graph.isAsked()) return 1.0;
  return options.speed;
}

void playOnce(ReplayOptions& options, PlayedSession& run, const Take& take) {
  ProgressBar progress("Replaying");
  const double end = options.to.value_or(std::numeric_limits<double>::infinity());
  MachinePace pace(speedOf(options));
  for (bool goesOn = run.begin(); goesOn && !isInterrupted(); goesOn = run.step()) {
    progress.show(run.getShareDone());
    if (run.getSeconds() > end) return;
    if (run.getSeconds() < options.from) continue;
    pace.await(run.getSeconds());
    showOnGraph(options.graph, run);
    take(run);
  }
}

// Opens the session anew for each pass: a replay is always the same.
void playAll(ReplayOptions& options, outlets::OutletList& outlets, OutputFiles& output,
             const Take& take, const Take& takeEnd) {
  do {
    PlayedSession run(options.run, options.poses, options.sensors);
    catchInterrupts();
    if (!output.isOpen()) output.open(run.getSession(), outlets, false);
    const GraphScope onGraph = options.graph.open(run.getSession(), false);
    playOnce(options, run, take);
    takeEnd(run);
    outlets.finish();
    run.warnOfDamage();
  } while (options.loop && !isInterrupted());
}

int replayToFile(ReplayOptions& options) {
  SessionSummary summary;
  outlets::OutletList outlets;
  const auto take = [&](PlayedSession& run) {
    const session::Snapshot snapshot = run.look();
    // A recording needs all sensors, for later comparisons.
    outlets.show(options.output.isRecording() ? run.getSession().look() : snapshot);
    summary.add(snapshot);
  };
  playAll(options, outlets, options.output, take, [](PlayedSession&) {});
  summary.print(options.output.getSummaryStream());
  return options.output.report(options.output.getSummaryStream()) ? 0 : kIncomplete;
}

// A table is printed at the end, because its columns fit all rows.
int replayToOutput(ReplayOptions& options) {
  outlets::RecordWriter writer(std::cout, outlets::parseFormat(options.format));
  outlets::OutletList none;
  const auto take = [&](PlayedSession& run) {
    writer.write(run.look());
    std::cout.flush();
  };
  playAll(options, none, options.output, take, [&](PlayedSession&) {
    writer.finish(getLineWidth());
    std::cout.flush();
  });
  return 0;
}

int judge(const Verdict& verdict) {
  if (verdict.differing > 0) {
    std::cout << ko::log::onOneLine(verdict.first) << '\n'
              << verdict.differing << " of " << verdict.looks << " snapshots differ.\n";
  } else if (verdict.looks > 0) {
    std::cout << "The records of all " << verdict.looks << " snapshots are equal, bit for bit.\n";
  } else {
    std::cout << "There was no snapshot to compare.\n";
  }
  if (verdict.missing > 0) {
    std::cout << verdict.missing << " snapshots could not be compared.\n";
  } else if (verdict.isDamaged) {
    std::cout << "The recording is damaged; its unreadable parts were not compared.\n";
  }
  const bool isWhole = verdict.looks > 0 && verdict.missing == 0 && !verdict.isDamaged;
  return verdict.differing == 0 && isWhole ? 0 : 1;
}

int compare(ReplayOptions& options) {
  Verdict verdict;
  outlets::OutletList none;
  const auto take = [&](PlayedSession& run) {
    ++verdict.looks;
    const auto difference = run.compare();
    if (!difference) return;
    if (verdict.differing++ == 0) verdict.first = difference->toText();
  };
  playAll(options, none, options.output, take, [&](PlayedSession& run) {
    verdict.missing += run.countMissing();
    verdict.isDamaged = verdict.isDamaged || run.isDamaged();
  });
  return judge(verdict);
}

// A sonar log reads the poses next to it if --poses is missing.
void checkOutput(const ReplayOptions& options) {
  const auto beside = std::filesystem::path(options.run).replace_filename("poses.txt");
  options.output.checkIsNot(options.run);
  options.output.checkIsNot(options.poses.value_or(beside.string()));
}

int replay(ReplayOptions& options) {
  options.run = session::findRecording(options.run);
  checkTimes(options.from, options.to, options.speed);
  checkOutput(options);
  if (options.compare) return compare(options);
  return options.output.isAsked() ? replayToFile(options) : replayToOutput(options);
}

/** Adds when and how fast it plays; returns the option that lets it play again. */
CLI::Option* addTimes(CLI::App& command, ReplayOptions& options) {
  command.add_option("--from", options.from, "show only later steps (s from the start)");
  command.add_option("--to", options.to, "stop at this time (s from the start)");
  command.add_option(
      "--speed,--pace", options.speed,
      "speed: seconds of the session per second of real time (default: as fast as possible; 1 "
      "with --ros2)");
  return command.add_flag("--loop", options.loop, "repeat until Ctrl-C");
}

}  // namespace

void addReplayCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = std::make_shared<ReplayOptions>();
  options->sensors = robots.sensors;
  CLI::App* command =
      program.add_subcommand("replay", "Play a recording or a log to the sensors, and read them");
  command->footer(kReplayFooter);
  command->add_option("RUN", options->run, "recording or log: a file, or one of the project's own")
      ->required()
      ->type_name("lidar.log|run.mcap|cut.mcap|FILE")
      ->check(namesAFile);
  command
      ->add_option("--poses", options->poses,
                   "poses of a sonar log (default: poses.txt next to it)")
      ->type_name("FILE")
      ->check(namesAFile);
  CLI::Option* output = options->output.addOption(
      *command, "-o,--output",
      "file: .mcap is a recording again, .csv has a line per point, any other name one JSON per "
      "record; then standard output has a summary");
  CLI::Option* compare =
      command
          ->add_flag("--compare", options->compare,
                     "compare the records with the recorded ones, bit for bit; print the first "
                     "difference. Exit status 1 if any differs or could not be compared")
          ->excludes(output);
  command->add_option("--format", options->format, kRecordFormats)
      ->type_name("table|json|jsonl|csv")
      ->excludes(output)
      ->excludes(compare)
      ->capture_default_str();
  addTimes(*command, *options)->excludes(output);
  options->graph.addTo(*command);
  command->callback([options, &status] { status = replay(*options); });
}

}  // namespace QV::app
