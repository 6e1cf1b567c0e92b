#include <iostream>
#include <limits>
#include <memory>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/ros2/graph_option.h"
#include "outlets/outlet.h"
#include "outlets/web/live_server.h"
#include "platform/ko/log.h"
#include "platform/model/internal/number_text.h"
#include "ros2/recording/session_replay.h"
#include "session/internal/command.h"
#include "session/shared_files.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr char kFooter[] =
    "Open the address that is printed in a browser, or in a viewer that speaks the Foxglove\n"
    "WebSocket protocol. Only this machine reaches it unless --address says otherwise.";

struct ServeOptions : CommonOptions {
  outlets::ServerSettings server;
  std::string replay;
  OutputFiles record;
  GraphOption graph;
  std::string speed = "1";
};

/** More than most machines make; clients are heard after 20 ms of it. */
constexpr double kGreatestSpeed = 100.0;

double speedOf(const std::string& text) {
  if (text == "max") return kGreatestSpeed;
  const auto speed = Model::toNumber(text);
  if (speed && *speed >= session::kSlowestTime && *speed <= kGreatestSpeed) return *speed;
  throw session::UsageError("--speed: a number from 0.1 to 100 or max expected, \"" + text +
                            "\" given");
}

void warnIfOpen(const outlets::LiveServer& server, const std::string& address) {
  if (!server.isOpen()) return;
  std::cerr << "qvsensors: warning: whoever reaches " << address
            << " can watch and drive this robot\n";
}

/** False if what was asked for is not all written. */
bool serveSession(ServeOptions& options, session::Session& session, ko::log::LogRing& log) {
  session.setSpeed(speedOf(options.speed));
  const GraphScope onGraph = options.graph.open(session, options.replay.empty());
  const auto files = std::make_shared<outlets::OutletList>();
  // Before the first demand: a recording has all from the start.
  options.record.open(session, *files, options.subscriptions.empty());
  if (const auto robot = options.graph.getOutlet()) files->add(robot);
  outlets::LiveServer server(session, log, options.server);
  if (options.record.isAsked() || options.graph.isAsked()) server.add(files);
  if (!options.subscriptions.empty()) server.subscribe(options.namesFor(session.getManager()));
  warnIfOpen(server, options.server.address);
  options.record.getSummaryStream() << session.getTitle() << " at " << server.getUrl() << std::endl;
  while (!isInterrupted()) {
    options.graph.obey();
    server.runBriefly();
  }
  files->finish();
  return options.record.report(options.record.getSummaryStream());
}

bool serve(ServeOptions& options) {
  // Before the robot: it hears of sensors that can't be built.
  ko::log::LogRing log;
  if (options.replay.empty()) {
    const auto session = options.openSession();
    options.notePose(*session);
    return serveSession(options, *session, log);
  }
  ros2::SessionReplay run(session::findRecording(options.replay), options.robots.sensors);
  run.begin();
  return serveSession(options, run.getSession(), log);
}

}  // namespace

void addServeCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<ServeOptions>(robots);
  CLI::App* command = program.add_subcommand("serve", "Show and drive the robot in a browser");
  command->footer(kFooter);
  addWorld(*command, *options);
  addPose(*command, *options);
  command
      ->add_option("--subscribe", options->subscriptions,
                   "sensor or family to subscribe to at the start; repeat for more")
      ->allow_extra_args(false);
  CLI::Option* replay =
      command
          ->add_option("--replay", options->replay,
                       "a recording in place of a robot, with a time line (see qvsensors replay)")
          ->type_name("FILE")
          ->check(namesAFile)
          ->excludes("--kind")
          ->excludes("--robot");
  options->record
      .addOption(*command, "--record",
                 "file (.mcap) for all of it; wants every sensor that --subscribe names, all "
                 "without it")
      ->excludes(replay);
  options->graph.addTo(*command);
  command
      ->add_option("--speed", options->speed,
                   "seconds of the session for one of the clock, or max: as fast as it goes")
      ->capture_default_str();
  command->add_option("--port", options->server.port, "to listen at; 0 takes any that is free")
      ->check(wholeNumber(0, std::numeric_limits<unsigned short>::max()))
      ->capture_default_str();
  command
      ->add_option("--address", options->server.address,
                   "IP address to listen at; others than this machine's own let others in")
      ->capture_default_str();
  command
      ->add_option("--allow-origin", options->server.origins,
                   "origin of a page that is let in, as https://viewer.example; repeat for more")
      ->allow_extra_args(false);
  command->add_flag("--viewer-drive", options->server.viewerDrive,
                    "let viewers of the Foxglove protocol drive, as from a teleop panel");
  command->callback([options, &status] {
    if (!serve(*options)) status = kIncomplete;
  });
}

}  // namespace QV::app
