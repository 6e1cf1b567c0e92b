#include <iostream>
#include <memory>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/ros2/graph_link.h"

namespace QV::app {
namespace {

struct Ros2Options : CommonOptions {
  GraphArguments graph;
  bool wantsList = false;
};

}  // namespace

void addRos2Command(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<Ros2Options>(robots);
  options->graph.isDriven = true;
  options->heard.joining.isAlwaysUsed = true;
  CLI::App* command =
      program.add_subcommand("ros2", "List the topics of a robot on a ROS 2 graph (serve --ros2)");
  command
      ->add_flag("--list", options->wantsList, "show its topics, with their names and types in DDS")
      ->required();
  addWorld(*command, *options);
  options->graph.addTo(*command);
  command->callback([options] {
    options->graph.joining = options->heard.joining;
    std::cout << listGraphTopics(options->graph, *options->openSession());
  });
}

}  // namespace QV::app
