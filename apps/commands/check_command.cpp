#include <algorithm>
#include <iostream>
#include <memory>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/progress_bar.h"
#include "apps/output/quiet_log.h"
#include "outlets/files/internal/table.h"
#include "outlets/files/record_output.h"
#include "outlets/internal/json_values.h"
#include "session/sensor_check.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

typedef std::vector<session::CheckedSensor> CheckedSensors;

constexpr char kCheckFooter[] =
    "A sensor works if it starts, gives records without a break, none older than 0.4 s and no "
    "point\n"
    "that it can't have measured, and shows something else once the robot has turned on the spot.\n"
    "A check can't see ranges that are wrong but believable, or late without saying so; what a\n"
    "blind zone says; a bumper that nothing presses; a people detector that is blind.\n"
    "Status: 0 if every sensor works, 1 if one fails.";

std::set<std::string> sensorsFor(const CommonOptions& options,
                                 const sensor::SensorManager& manager) {
  std::set<std::string> sensors;
  for (const std::string& name : options.namesFor(manager)) {
    if (manager.isFamily(name)) {
      sensors.merge(manager.getSensorsByFamily(name));
    } else {
      sensors.insert(name);
    }
  }
  return sensors;
}

CheckedSensors checkAll(session::Session& robot, ko::SimulatedTime& time,
                        const CommonOptions& options) {
  CheckedSensors checked;
  if (options.subscriptions.empty()) checked = session::findUnbuilt(robot);
  const auto sensors = sensorsFor(options, robot.getManager());
  if (sensors.empty() && checked.empty())
    throw session::UsageError(*options.robot + ": a sensor expected");
  ProgressBar progress("Checking");
  std::size_t done = 0;
  for (const std::string& name : sensors) {
    if (isInterrupted()) break;
    checked.push_back(session::checkSensor(robot, time, name));
    progress.show(static_cast<double>(++done) / static_cast<double>(sensors.size()));
  }
  return checked;
}

void printTable(const CheckedSensors& sensors, long failed) {
  outlets::Table table({"sensor", "family", "result", ">records", ">points", "why"});
  for (const auto& sensor : sensors) {
    table.add({sensor.name, sensor.family, getName(sensor.verdict), std::to_string(sensor.records),
               std::to_string(sensor.points), ko::log::onOneLine(sensor.why)});
  }
  table.print(std::cout);
  std::cout << (static_cast<long>(sensors.size()) - failed) << " of " << sensors.size()
            << " sensors work" << (isInterrupted() ? "; interrupted before the others" : "")
            << ".\n";
}

void printJson(const CheckedSensors& sensors) {
  for (const auto& sensor : sensors) {
    std::cout << nlohmann::ordered_json{{"sensorName", sensor.name},
                                        {"familyName", sensor.family},
                                        {"works", sensor.verdict == session::Verdict::works},
                                        {"result", getName(sensor.verdict)},
                                        {"records", sensor.records},
                                        {"points", sensor.points},
                                        {"why", sensor.why}}
              << '\n';
  }
}

int check(const CommonOptions& options) {
  const outlets::Format format =
      outlets::parseFormat(options.format, {outlets::Format::table, outlets::Format::json});
  const QuietLog quiet;
  ko::SimulatedTime time;
  const auto robot = options.makeRun();
  const CheckedSensors sensors = checkAll(*robot, time, options);
  const auto failed = std::count_if(sensors.begin(), sensors.end(), [](const auto& sensor) {
    return sensor.verdict != session::Verdict::works;
  });
  if (format == outlets::Format::json) {
    printJson(sensors);
  } else {
    printTable(sensors, failed);
  }
  return failed > 0 ? 1 : 0;
}

}  // namespace

void addCheckCommand(CLI::App& program, int& status) {
  auto options = std::make_shared<CommonOptions>();
  options->somebodyAhead = true;
  CLI::App* command =
      program.add_subcommand("check", "Start each sensor in turn: what works, what fails and why");
  command->footer(kCheckFooter);
  addWorld(*command, *options);
  addOptionalPose(*command, *options);
  addSubscriptions(*command, *options);
  addFormat(*command, *options, "table; json: a sensor per line");
  command->callback([options, &status] { status = check(*options); });
}

}  // namespace QV::app
