#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/progress_bar.h"
#include "apps/output/run_summary.h"
#include "apps/subscriber.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/record_file.h"
#include "session/open.h"

namespace QV::app {
namespace {

constexpr char kReplayFooter[] =
    "LOG is a CARMEN log of a lidar (FLASER and ODOM lines), or a sonar log, whose lines are a "
    "time\n"
    "(ms) and 8 ranges (mm); poses are lines of a time (ms), x, y (mm) and heading (0.1 degrees).\n"
    "What LOG holds tells which. Records come at the times of the log, its first step at 0 s.";

struct ReplayOptions {
  std::string log;
  std::optional<std::string> poses;
  std::string output;
  std::string format = "table";
};

/** Hands what there is to see at each step on. */
template <typename F>
void replayAll(const ReplayOptions& options, F take) {
  const auto session = session::openRecording(options.log, options.poses);
  session->subscribe(kSubscriber, session->getManager().getFamilyNames());
  ProgressBar progress("Replaying");
  for (bool goesOn = true; goesOn && !isInterrupted(); goesOn = session->step()) {
    take(session->look());
    progress.show(session->getShareDone());
  }
}

void replayToFile(const ReplayOptions& options) {
  RunSummary summary;
  outlets::RecordFile file(options.output);
  replayAll(options, [&](const session::Snapshot& snapshot) {
    file.show(snapshot);
    summary.add(snapshot);
  });
  file.finish();
  summary.print(std::cout);
  std::cout << "Wrote " << options.output << '\n';
}

void replayToOutput(const ReplayOptions& options) {
  const outlets::Format format = outlets::parseFormat(options.format);
  std::vector<session::SensorState> all;
  replayAll(options, [&all](const session::Snapshot& snapshot) {
    std::ranges::move(session::sensorsByName(snapshot), std::back_inserter(all));
  });
  outlets::writeRecords(std::cout, all, format, session::Frame::robot);
}

}  // namespace

void addReplayCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto options = std::make_shared<ReplayOptions>();
  CLI::App* command =
      program.add_subcommand("replay", "Play a lidar or sonar log to the sensors, and read them");
  command->footer(kReplayFooter);
  command->add_option("LOG", options->log, "lidar or sonar log")->required()->check(namesAFile);
  command
      ->add_option("--poses", options->poses, "poses of a sonar log (default: poses.txt beside it)")
      ->check(namesAFile);
  CLI::Option* output =
      command
          ->add_option("-o,--output", options->output,
                       "file for the records, one JSON per line, or .csv; then standard "
                       "output has a summary")
          ->check(namesAFile);
  command
      ->add_option("--format", options->format,
                   "table; json: a record per line; csv: a point per line")
      ->excludes(output)
      ->capture_default_str();
  command->callback([options] {
    if (options->output.empty()) {
      replayToOutput(*options);
    } else {
      replayToFile(*options);
    }
  });
}

}  // namespace QV::app
