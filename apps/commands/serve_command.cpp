#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "outlets/web/live_server.h"
#include "platform/ko/log.h"

namespace QV::app {
namespace {

constexpr char kFooter[] =
    "Open the address that is printed in a browser, or in a viewer that speaks the Foxglove\n"
    "WebSocket protocol. Only this machine reaches it unless --address says otherwise.";

struct ServeOptions : CommonOptions {
  outlets::ServerSettings server;
};

void warnIfOpen(const outlets::LiveServer& server, const std::string& address) {
  if (!server.isOpen()) return;
  std::cerr << "qvsensors: warning: whoever reaches " << address
            << " can watch and drive this robot\n";
}

void serve(const ServeOptions& options) {
  // Before the robot: it hears of sensors that can't be built.
  ko::log::LogRing log;
  const auto session = options.openSession();
  outlets::LiveServer server(*session, log, options.server);
  if (!options.subscriptions.empty()) server.subscribe(options.namesFor(session->getManager()));
  warnIfOpen(server, options.server.address);
  std::cout << session->getTitle() << " at " << server.getUrl() << std::endl;
  while (!isInterrupted()) server.runBriefly();
}

}  // namespace

void addServeCommand(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<ServeOptions>(robots);
  CLI::App* command = program.add_subcommand("serve", "Show and drive the robot in a browser");
  command->footer(kFooter);
  addWorld(*command, *options);
  addOptionalPose(*command, *options);
  command
      ->add_option("--subscribe", options->subscriptions,
                   "sensor or family to subscribe to at the start; repeat for more")
      ->allow_extra_args(false);
  command->add_option("--port", options->server.port, "to listen at; 0 takes any that is free")
      ->capture_default_str();
  command
      ->add_option("--address", options->server.address,
                   "IP address to listen at; others than this machine's own let others in")
      ->capture_default_str();
  command
      ->add_option("--allow-origin", options->server.origins,
                   "origin of a page that is let in, as https://viewer.example; repeat for more")
      ->allow_extra_args(false);
  command->callback([options] { serve(*options); });
}

}  // namespace QV::app
