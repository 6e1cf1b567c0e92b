#include <iostream>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "outlets/files/internal/record_output.h"

namespace QV::app {
namespace {

void read(const CommonOptions& options) {
  const outlets::Format format = outlets::parseFormat(options.format);
  const auto session = options.openSession();
  const session::Snapshot snapshot = readOnce(*session, options);
  outlets::writeRecords(std::cout, session::sensorsByName(snapshot), format, snapshot.frame);
}

}  // namespace

void addReadCommand(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<CommonOptions>(robots);
  CLI::App* command = program.add_subcommand("read", "Read the sensors once, at one pose");
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  addFormat(*command, *options, "table; json: a record per line; csv: a point per line");
  command->callback([options] { read(*options); });
}

}  // namespace QV::app
