#include <iostream>
#include <limits>
#include <memory>

#include <CLI/CLI.hpp>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/output/notes.h"
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
    "WebSocket protocol. By default only this machine can connect; see --address.";

struct ServeOptions : CommonOptions {
  outlets::ServerSettings server;
  std::string replay;
  OutputFiles record;
  GraphOption graph;
  std::string speed = "1";
};

/** The greatest speed: more than most machines reach. Clients are served every 20 ms of it. */
constexpr double kGreatestSpeed = 100.0;

double speedOf(const std::string& text) {
  if (text == "max") return kGreatestSpeed;
  const auto speed = Model::toNumber(text);
  if (speed && *speed >= session::kSlowestTime && *speed <= kGreatestSpeed) return *speed;
  throw session::UsageError("--speed: a number from 0.1 to 100 or max expected, \"" + text +
                            "\" given");
}

void warnIfOpen(const outlets::LiveServer& server) {
  if (!server.isOpen()) return;
  complain("warning: every machine that can connect to port " + std::to_string(server.getPort()) +
           " can watch and drive this robot");
}

/** Returns false if the recording is incomplete. */
bool serveSession(ServeOptions& options, session::Session& session, ko::log::LogRing& log) {
  session.setSpeed(speedOf(options.speed));
  catchInterrupts();
  const GraphScope onGraph = options.graph.open(session, options.replay.empty());
  const auto files = std::make_shared<outlets::OutletList>();
  // The recording opens before the first demand, so that it misses nothing.
  options.record.open(session, *files, options.subscriptions.empty());
  if (const auto robot = options.graph.getOutlet()) files->add(robot);
  outlets::LiveServer server(session, log, options.server);
  if (options.record.isAsked() || options.graph.isAsked()) server.add(files);
  if (!options.subscriptions.empty()) server.subscribe(options.namesFor(session));
  warnIfOpen(server);
  if (options.replay.empty()) options.notePose(session);
  options.record.getSummaryStream() << session.getTitle() << " at " << server.getUrl() << std::endl;
  while (!isInterrupted()) {
    options.graph.obey();
    server.runBriefly();
  }
  files->finish();
  return options.record.report(options.record.getSummaryStream());
}

bool serve(ServeOptions& options) {
  // The log ring is made before the robot, to keep its errors of sensors that can't be built.
  ko::log::LogRing log;
  if (options.replay.empty()) {
    const auto session = options.openSession();
    return serveSession(options, *session, log);
  }
  ros2::SessionReplay run(session::findRecording(options.replay), options.robots.sensors);
  run.begin();
  return serveSession(options, run.getSession(), log);
}

void addServer(CLI::App& command, outlets::ServerSettings& server) {
  command.add_option("--port", server.port, "port of the server; 0: any free port")
      ->check(wholeNumber(0, std::numeric_limits<unsigned short>::max()))
      ->capture_default_str();
  command
      .add_option("--address", server.address,
                  "IP address of the server; any but 127.0.0.1 and ::1 lets other machines in")
      ->capture_default_str();
  command
      .add_option(
          "--allow-origin", server.origins,
          "origin of pages that may connect, for example https://viewer.example; repeat for more")
      ->allow_extra_args(false);
  command.add_flag("--viewer-drive", server.viewerDrive,
                   "let viewers of the Foxglove protocol drive, for example from a teleop panel");
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
                       "a recording in place of a robot, with a time line (see the command replay)")
          ->type_name(kRecordings)
          ->check(namesAFile)
          ->excludes("--kind")
          ->excludes("--robot")
          ->excludes("--shift-origin");
  options->record
      .addOption(*command, "--record",
                 "record the session to this file (.mcap): the sensors of --subscribe, default "
                 "all")
      ->excludes(replay);
  options->graph.addTo(*command, &options->heard.joining);
  command
      ->add_option("--speed,--pace", options->speed,
                   "seconds of the session per second of real time, 0.1 to 100, or max: 100")
      ->capture_default_str();
  addServer(*command, options->server);
  command->callback([options, &status] {
    if (!serve(*options)) status = kIncomplete;
  });
}

}  // namespace QV::app
