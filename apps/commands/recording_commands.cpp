#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/lines.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/internal/table.h"
#include "platform/ko/log.h"
#include "ros2/bag/bag_reader.h"
#include "session/internal/number_text.h"
#include "session/shared_files.h"

namespace QV::app {
namespace {

using nlohmann::ordered_json;

constexpr double kNanosecond = 1e-9;

std::string secondsText(std::uint64_t nanoseconds, int digits = 2) {
  return session::fixed(kNanosecond * static_cast<double>(nanoseconds), digits);
}

double durationOf(const ros2::BagInfo& info) {
  return kNanosecond * static_cast<double>(info.endTime - info.startTime);
}

/** Returns the robot's title from a recording of this library; empty for other recordings. */
std::string titleOf(const ros2::BagInfo& info) {
  for (const auto& metadata : info.metadata) {
    const auto title = metadata.values.find("title");
    if (metadata.name == "qv" && title != metadata.values.end()) return title->second;
  }
  return {};
}

/** The sensors that the topics are named after. */
std::vector<std::string> sensorsOf(const ros2::BagInfo& info) {
  std::vector<std::string> sensors;
  for (const auto& row : info.topics) {
    const auto& name = row.topic.name;
    const auto slash = name.rfind('/');
    if (row.topic.type != "sensor_msgs/msg/PointCloud2" || slash == std::string::npos) continue;
    if (name.substr(slash) == "/points" && slash > 1) sensors.push_back(name.substr(1, slash - 1));
  }
  return sensors;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// A recording's texts may come from anywhere: nothing in them may act on a terminal.
void printLine(const std::string& line, std::ostream& out = std::cout) {
  out << ko::log::onOneLine(line) << '\n';
}

void printDamage(const ros2::BagDamage& damage, std::ostream& out = std::cout) {
  for (const std::string& line : damage.lines) printLine(line, out);
  if (damage.chunks > 0 || damage.messages > 0) {
    out << damage.chunks << " chunks and " << damage.messages << " messages can't be read.\n";
  }
}

void printTable(const ros2::BagInfo& info) {
  printLine(info.path + ": " + session::fixed(durationOf(info), 2) + " s, " +
            std::to_string(info.count) + " messages, " + std::to_string(info.fileBytes) + " bytes");
  if (const std::string title = titleOf(info); !title.empty()) {
    outlets::Table robot({"robot", "sensors"});
    robot.add({ko::log::onOneLine(title), ko::log::onOneLine(joined(sensorsOf(info)))});
    robot.print(std::cout, getLineWidth());
  }
  outlets::Table table(
      {"topic", "type", ">messages", ">Hz", ">longest gap s", ">from s", ">to s", ">bytes"});
  for (const auto& row : info.topics) {
    const bool isEmpty = row.count == 0;
    const auto since = [&](std::uint64_t time) {
      return isEmpty ? "-" : secondsText(time - info.startTime);
    };
    table.add({ko::log::onOneLine(row.topic.name), ko::log::onOneLine(row.topic.type),
               std::to_string(row.count), session::fixed(row.rate, 2),
               isEmpty ? "-" : secondsText(row.longestGap, 3), since(row.startTime),
               since(row.endTime), std::to_string(row.bytes)});
  }
  table.dropFirst({"bytes", "from s", "longest gap s", "to s", "type"});
  table.print(std::cout, getLineWidth());
  printDamage(info.damage);
}

void printJson(const ros2::BagInfo& info) {
  ordered_json topics = ordered_json::array();
  for (const auto& row : info.topics) {
    topics.push_back({{"name", row.topic.name},
                      {"type", row.topic.type},
                      {"messages", row.count},
                      {"rate", row.rate},
                      {"longestGap", kNanosecond * static_cast<double>(row.longestGap)},
                      {"start", row.startTime},
                      {"end", row.endTime},
                      {"bytes", row.bytes}});
  }
  const ordered_json all{{"path", info.path},
                         {"bytes", info.fileBytes},
                         {"duration", durationOf(info)},
                         {"start", info.startTime},
                         {"end", info.endTime},
                         {"messages", info.count},
                         {"robot", titleOf(info)},
                         {"sensors", sensorsOf(info)},
                         {"topics", topics},
                         {"damage",
                          {{"chunks", info.damage.chunks},
                           {"messages", info.damage.messages},
                           {"lines", info.damage.lines}}}};
  std::cout << outlets::toText(all) << '\n';
}

void inform(const std::string& path, const std::string& format) {
  const bool isTable = outlets::parseFormat(format, kListFormats) == outlets::Format::table;
  const ros2::BagInfo info = ros2::readBagInfo(path);
  isTable ? printTable(info) : printJson(info);
}

void recover(const std::string& from, const std::string& to) {
  // So that the new recording is whole.
  catchInterrupts();
  const ros2::BagInfo info = ros2::recoverBag(from, to);
  std::ostream& out = to == "-" ? std::cerr : std::cout;
  printDamage(info.damage, out);
  printLine("Recovered " + std::to_string(info.count) + " messages over " +
                session::fixed(durationOf(info), 2) + " s to " + to,
            out);
}

}  // namespace

void addInfoCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto options = std::make_shared<CommonOptions>();
  auto path = std::make_shared<std::string>();
  CLI::App* command = program.add_subcommand(
      "info", "Show what a recording contains: MCAP, a rosbag2 folder or its SQLite file");
  command->add_option("RECORDING", *path, ".mcap, .db3 or a folder with metadata.yaml")
      ->required()
      ->type_name(kRecordings)
      ->check(namesAFile);
  addFormat(*command, *options, "table; json or jsonl: an object");
  command->callback([options, path] { inform(session::findRecording(*path), options->format); });
}

void addRecoverCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto from = std::make_shared<std::string>();
  auto to = std::make_shared<std::string>();
  CLI::App* command = program.add_subcommand(
      "recover", "Write the readable part of a cut or damaged recording to a new one");
  command->add_option("RECORDING", *from, "the damaged recording")
      ->required()
      ->type_name(kRecordings)
      ->check(namesAFile);
  command->add_option("-o,--output", *to, "the new file (MCAP)")
      ->required()
      ->type_name("FILE")
      ->check(namesAFile);
  command->callback([from, to] { recover(session::findRecording(*from), *to); });
}

}  // namespace QV::app
