#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/output/fresh_records.h"
#include "apps/replay/machine_pace.h"
#include "apps/silent_sensors.h"
#include "apps/subscriber.h"
#include "outlets/outlet.h"
#include "platform/model/internal/number_text.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr char kStreamFooter[] =
    "Writes each record once, in a line of its own, when it arrives. Times are the\n"
    "robot's, or with --from-ros2 the graph's. The stream ends with Ctrl-C or after --for. After\n"
    "--for the exit status is 1 if a subscribed sensor gave no record and is not sound; after\n"
    "Ctrl-C it is 130.";

struct StreamOptions : CommonOptions {
  OutputFiles output{"-"};
  double rate = 10.0;
  std::string speed = "1";
  std::optional<double> seconds;
  bool wander = false;
};

/** Returns the speed; std::nullopt for as fast as possible. */
std::optional<double> speedOf(const StreamOptions& options) {
  if (options.speed == "max" || options.heard.asked) return std::nullopt;
  const auto speed = Model::toNumber(options.speed);
  if (speed && *speed > 0.0 && std::isfinite(*speed)) return *speed;
  throw session::UsageError("--speed: a number above 0 or max expected, \"" + options.speed +
                            "\" given");
}

void checkRange(const StreamOptions& options) {
  if (!(options.rate > 0.0 && options.rate <= 1e6))
    throw session::UsageError(std::string("--rate: a number above 0 and up to 1000000 expected, ") +
                              session::shortest(options.rate) + " given");
  if (options.seconds && !(*options.seconds >= 0.0 && *options.seconds <= 1e9))
    throw session::UsageError(std::string("--for: seconds from 0 to 1000000000 expected, ") +
                              session::shortest(*options.seconds) + " given");
}

/** Streams until an interruption or --for, and returns the last snapshot. */
session::Snapshot streamOn(const StreamOptions& options, session::Session& session,
                           outlets::Outlet& outlet, std::set<std::string>& heard) {
  MachinePace pace(speedOf(options));
  FreshRecords fresh;
  const auto start = ko::Clock::now();
  const double last = options.seconds.value_or(INFINITY) * options.rate;
  for (double cycle = 1.0; cycle <= last && !isInterrupted(); ++cycle) {
    session.run(start + ko::Duration(std::llround(1e9 * cycle / options.rate)) - ko::Clock::now());
    const session::Snapshot seen = session.look();
    for (const auto& sensor : seen.sensors)
      if (!sensor.records.empty()) heard.insert(sensor.name);
    // A recording needs all records, for later comparisons.
    outlet.show(options.output.isRecording() ? seen : fresh.take(seen));
    std::cout.flush();
    pace.await(session::inSeconds(ko::Clock::now().time_since_epoch()));
  }
  return session.look();
}

int stream(StreamOptions& options) {
  checkRange(options);
  speedOf(options);
  const auto session = options.openSession();
  catchInterrupts();
  outlets::OutletList outlets;
  options.output.open(*session, outlets, false);
  session->subscribe(kSubscriber, options.namesFor(*session));
  session->setDemand(outlets.getDemand());
  options.notePose(*session);
  if (options.wander) session->wander();
  std::set<std::string> heard;
  const session::Snapshot end = streamOn(options, *session, outlets, heard);
  outlets.finish();
  if (!options.output.report(std::cerr)) return kIncomplete;
  return reportSilent(findSilent(*session, options.subscriptions, end, heard));
}

}  // namespace

void addStreamCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<StreamOptions>(robots);
  CLI::App* command =
      program.add_subcommand("stream", "Write each new record as a line of JSON, until Ctrl-C");
  command->footer(kStreamFooter);
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  options->output
      .addOption(*command, "-o,--output",
                 "file: .mcap is a recording, .csv has a line per point, any other name one JSON "
                 "per record; - is standard output")
      ->capture_default_str();
  command->add_option("--rate", options->rate, "checks for new records per second of the session")
      ->capture_default_str();
  command
      ->add_option("--speed,--pace", options->speed,
                   "seconds of the session per second of real time, or max: as fast as possible")
      ->capture_default_str();
  command->add_option("--for", options->seconds, "end after this session time (s)");
  command->add_flag("--wander", options->wander, "the robot drives about in free space")
      ->excludes("--from-ros2");
  command->callback([options, &status] { status = stream(*options); });
}

}  // namespace QV::app
