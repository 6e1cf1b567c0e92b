#include <iostream>
#include <memory>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/lines.h"
#include "apps/silent_sensors.h"
#include "outlets/files/internal/record_output.h"

namespace QV::app {
namespace {

int read(const CommonOptions& options) {
  outlets::RecordWriter writer(std::cout, outlets::parseFormat(options.format));
  const auto session = options.openSession();
  const session::Snapshot snapshot = readOnce(*session, options);
  const auto silent = findSilent(*session, options.subscriptions, snapshot);
  writer.write(snapshot);
  for (const auto& sensor : silent) writer.addSilent(sensor);
  writer.finish(getLineWidth());
  return reportSilent(silent);
}

}  // namespace

void addReadCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<CommonOptions>(robots);
  CLI::App* command = program.add_subcommand("read", "Read the sensors once, at one pose");
  command->footer("The exit status is 1 if a subscribed sensor gave no record and is not sound.");
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  addFormat(*command, *options, kRecordFormats);
  command->callback([options, &status] { status = read(*options); });
}

}  // namespace QV::app
