#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/lines.h"
#include "apps/output/progress_bar.h"
#include "apps/output/quiet_log.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/internal/table.h"
#include "outlets/internal/json_values.h"
#include "robot/world/robot_description.h"
#include "session/internal/description_gaps.h"
#include "session/internal/session_parts.h"
#include "session/sensor_check.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

using CheckedSensors = std::vector<session::CheckedSensor>;

constexpr char kCheckFooter[] =
    "A sensor works if it starts, its records come without a gap, none is older than 0.4 s, no\n"
    "point is impossible, and its points change when the robot turns on the spot (not tested on\n"
    "a ROS 2 graph).\n"
    "The check can't notice plausible but wrong ranges, late ranges with fresh timestamps, wrong\n"
    "answers of a blind zone, a dead bumper or a dead people detector.\n"
    "Column health: the library's verdict at the end of the check.\n"
    "Exit status: 0 if all sensors work and are sound and the description has no mistakes; else 1.";

std::set<std::string> sensorsFor(const CommonOptions& options, session::Session& session) {
  const sensor::SensorManager& manager = session.getManager();
  std::set<std::string> sensors;
  for (const std::string& name : options.namesFor(session)) {
    if (manager.isFamily(name)) {
      sensors.merge(manager.getSensorsByFamily(name));
    } else {
      sensors.insert(name);
    }
  }
  for (const auto& [name, family] : session::findUnbuiltSensors(session::robotOf(session)))
    if (std::ranges::find(options.subscriptions, family) != options.subscriptions.end())
      sensors.insert(name);
  return sensors;
}

CheckedSensors checkAll(session::Session& session, const CommonOptions& options) {
  catchInterrupts();
  ProgressBar progress("Checking");
  session::CheckOptions wanted;
  if (!options.subscriptions.empty()) wanted.sensors = sensorsFor(options, session);
  wanted.goesOn = [&progress](double done) {
    progress.show(done);
    return !isInterrupted();
  };
  return session::checkSensors(session, wanted);
}

using DescriptionFaults = std::vector<Model::DescriptionFault>;

void printFaults(const DescriptionFaults& faults) {
  for (const auto& fault : faults) {
    std::cout << "In the description: " << ko::log::onOneLine(fault.toText()) << '\n';
  }
}

// A problem that only health shows has the name of the health state.
const char* resultOf(const session::CheckedSensor& sensor) {
  const bool isHealthAlone = sensor.verdict == session::Verdict::works && !sensor.works();
  return isHealthAlone ? getName(sensor.health.state) : getName(sensor.verdict);
}

// Where both found the same, health names figure and limit. A sensor whose records pass may still
// have the health "late" or "suspect".
std::string whyOf(const session::CheckedSensor& sensor) {
  if (!isFault(sensor.health.state)) return sensor.why;
  const bool isSame = std::string(resultOf(sensor)) == getName(sensor.health.state);
  return isSame || sensor.why.empty() ? sensor.health.reason : sensor.why;
}

void printTable(const CheckedSensors& sensors, const DescriptionFaults& faults, long failed) {
  outlets::Table table(
      {"sensor", "family", "result", "health", ">records", ">points", "why", "remedy"});
  for (const auto& sensor : sensors) {
    table.add({sensor.name, sensor.family, resultOf(sensor), getName(sensor.health.state),
               std::to_string(sensor.records), std::to_string(sensor.points),
               ko::log::onOneLine(whyOf(sensor)), sensor.health.remedy});
  }
  table.dropFirst({"remedy", "points", "records", "family"});
  table.print(std::cout, getLineWidth());
  std::cout << (static_cast<long>(sensors.size()) - failed) << " of " << sensors.size()
            << " sensors work" << (isInterrupted() ? "; interrupted before the others" : "");
  if (!faults.empty())
    std::cout << "; " << faults.size() << (faults.size() == 1 ? " mistake" : " mistakes")
              << " in the description";
  std::cout << ".\n";
  printFaults(faults);
}

void addFaultsTo(outlets::JsonList& list, const DescriptionFaults& faults) {
  std::map<std::string, nlohmann::ordered_json> lines;
  for (const auto& fault : faults) lines[fault.sensor].push_back(fault.toText());
  for (const auto& [sensor, texts] : lines) {
    list.add({{"sensorName", sensor}, {"description", texts}});
  }
}

void printJson(outlets::Format format, const CheckedSensors& sensors, DescriptionFaults faults) {
  outlets::JsonList list(std::cout, format);
  for (const auto& sensor : sensors) {
    nlohmann::ordered_json line{
        {"sensorName", sensor.name}, {"familyName", sensor.family},
        {"works", sensor.works()},   {"result", resultOf(sensor)},
        {"records", sensor.records}, {"points", sensor.points},
        {"why", whyOf(sensor)},      {"health", outlets::toJson(sensor.health)}};
    std::erase_if(faults, [&](const auto& fault) {
      if (fault.sensor != sensor.name) return false;
      line["description"].push_back(fault.toText());
      return true;
    });
    list.add(line);
  }
  // Bumpers, and elements that are no sensors, have no line of their own.
  addFaultsTo(list, faults);
  list.finish();
}

/** Opens the session; if the robot can't be built, prints the mistakes of its description. */
std::unique_ptr<session::Session> openSession(const CommonOptions& options,
                                              outlets::Format format) {
  try {
    return options.openSession();
  } catch (const std::exception&) {
    if (!options.robot || options.heard.asked) throw;
    const auto& kinds = options.robots.sensors.getKinds();
    const auto description = robot::RobotDescription::fromFile(options.findRobot(), kinds);
    const auto faults = session::findSlips(description.model, kinds);
    if (format == outlets::Format::table) {
      printFaults(faults);
    } else {
      printJson(format, {}, faults);
    }
    throw;
  }
}

int check(const CommonOptions& options) {
  const outlets::Format format = outlets::parseFormat(options.format, kListFormats);
  const QuietLog quiet;
  const auto session = openSession(options, format);
  const CheckedSensors sensors = checkAll(*session, options);
  const auto failed = std::count_if(sensors.begin(), sensors.end(),
                                    [](const auto& sensor) { return !sensor.works(); });
  const DescriptionFaults faults = session::findDescriptionFaults(*session);
  if (sensors.empty() && faults.empty())
    throw session::UsageError(options.robot.value_or(session->getTitle()) +
                              ": the robot has no sensors");
  options.notePose(*session);
  if (format == outlets::Format::table) {
    printTable(sensors, faults, failed);
  } else {
    printJson(format, sensors, faults);
  }
  return failed > 0 || !faults.empty() ? 1 : 0;
}

}  // namespace

void addCheckCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<CommonOptions>(robots);
  options->somebodyAhead = true;
  CLI::App* command = program.add_subcommand(
      "check", "Start each sensor in turn and show what works, what fails and why");
  command->footer(kCheckFooter);
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  addFormat(*command, *options, "table; json: an array of sensors; jsonl: a sensor per line");
  command->callback([options, &status] { status = check(*options); });
}

}  // namespace QV::app
