#include <iostream>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "outlets/picture/session_picture.h"

namespace QV::app {
namespace {

void plot(const CommonOptions& options, const std::string& output) {
  outlets::checkPicturePath(output);
  const auto session = options.openSession();
  outlets::SessionPicture picture(output);
  picture.show(readOnce(*session, options));
  picture.finish();
  std::cout << "Wrote " << output << '\n';
}

}  // namespace

void addPlotCommand(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<CommonOptions>(robots);
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
