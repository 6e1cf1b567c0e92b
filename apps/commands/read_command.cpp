#include <iostream>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/record_output.h"

namespace QV::app {
namespace {

void read(const CommonOptions& options) {
  const Format format = parseFormat(options.format);
  SimulatedRobot robot(options.kind, options.mapPath());
  writeRecords(std::cout, readOnce(robot, options).records, format, "map");
}

}  // namespace

void addReadCommand(CLI::App& program) {
  auto options = std::make_shared<CommonOptions>();
  CLI::App* command = program.add_subcommand("read", "Read the sensors once, at one pose");
  addMap(*command, *options);
  addKind(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  command
      ->add_option("--format", options->format,
                   "table; json: a record per line; csv: a point per line")
      ->capture_default_str();
  command->callback([options] { read(*options); });
}

}  // namespace QV::app
