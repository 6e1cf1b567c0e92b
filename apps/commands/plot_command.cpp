#include <iostream>
#include <memory>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/silent_sensors.h"
#include "outlets/picture/session_picture.h"

namespace QV::app {
namespace {

int plot(const CommonOptions& options, const std::string& output) {
  outlets::checkPicturePath(output);
  const auto session = options.openSession();
  outlets::SessionPicture picture(output);
  const session::Snapshot snapshot = readOnce(*session, options);
  picture.show(snapshot);
  picture.finish();
  std::cout << "Wrote " << output << '\n';
  return reportSilent(findSilent(*session, options.subscriptions, snapshot));
}

}  // namespace

void addPlotCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<CommonOptions>(robots);
  auto output = std::make_shared<std::string>("scan.png");
  CLI::App* command = program.add_subcommand("plot", "Draw one reading over the map, as a PNG");
  command->footer("The exit status is 1 if a subscribed sensor gave no record and is not sound.");
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  command->add_option("-o,--output", *output, "picture to write")
      ->type_name("FILE")
      ->check(namesAFile)
      ->capture_default_str();
  command->callback([options, output, &status] { status = plot(*options, *output); });
}

}  // namespace QV::app
