#include <iostream>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "outlets/picture/run_picture.h"
#include "sensor/core/scoped_subscription.h"
#include "session/live_world.h"

namespace QV::app {
namespace {

void plot(const CommonOptions& options, const std::string& output) {
  outlets::checkPicturePath(output);
  ko::SimulatedTime time;
  const auto robot = options.makeRun();
  const sensor::ScopedSubscription subscription(robot->getManager(), "qvsensors",
                                                options.namesFor(robot->getManager()));
  time.advance(robot->getSettlingTime());
  outlets::RunPicture picture(output);
  picture.show(session::LiveWorld(*robot, time).look());
  picture.finish();
  std::cout << "Wrote " << output << '\n';
}

}  // namespace

void addPlotCommand(CLI::App& program) {
  auto options = std::make_shared<CommonOptions>();
  auto output = std::make_shared<std::string>("scan.png");
  CLI::App* command = program.add_subcommand("plot", "Draw one reading over the map, as a PNG");
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  command->add_option("-o,--output", *output, "picture to write")
      ->check(namesAFile)
      ->capture_default_str();
  command->callback([options, output] { plot(*options, *output); });
}

}  // namespace QV::app
