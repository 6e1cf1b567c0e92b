#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/notes.h"
#include "outlets/files/internal/record_output.h"
#include "outlets/files/internal/table.h"
#include "outlets/internal/json_values.h"
#include "platform/navigation/internal/map_shift.h"
#include "robot/maps/map_files.h"
#include "session/internal/find_room.h"
#include "session/internal/number_text.h"
#include "session/shared_files.h"

namespace QV::app {
namespace {

using outlets::Json;

/** The extent of a box parallel to the world's axes, in the map as it is held. Metres. */
struct Extent {
  Math::Position2D least;
  Math::Position2D most;
};

Extent extentOf(const OccupancyMap& map) {
  const float width = map.getResolution() * static_cast<float>(map.getWidth());
  const float height = map.getResolution() * static_cast<float>(map.getHeight());
  const auto& origin = map.getOrigin();
  Extent extent{origin * Math::Position2D(0, 0), origin * Math::Position2D(0, 0)};
  for (const auto& corner : {Math::Position2D(width, 0), {0, height}, {width, height}}) {
    const Math::Position2D at = origin * corner;
    extent.least = {std::min(extent.least.x, at.x), std::min(extent.least.y, at.y)};
    extent.most = {std::max(extent.most.x, at.x), std::max(extent.most.y, at.y)};
  }
  return extent;
}

/** The shares of the map's cells: free for a robot, unknown, and the rest. */
struct Shares {
  double free = 0.0;
  double unknown = 0.0;
  double occupied = 0.0;
};

Shares sharesOf(const OccupancyMap& map) {
  const auto& cells = map.getCells();
  const auto shareOf = [&](const auto& isSo) {
    const auto count = static_cast<double>(std::ranges::count_if(cells, isSo));
    return count / static_cast<double>(cells.size());
  };
  Shares shares;
  shares.free = shareOf([](float cell) { return cell <= OccupancyMap::kSolidAbove; });
  shares.unknown = shareOf([](float cell) { return cell == OccupancyMap::kUnknown; });
  shares.occupied = std::max(0.0, 1.0 - shares.free - shares.unknown);
  return shares;
}

std::string textOf(const Math::Pose2D& pose, const MapShift& shift) {
  return session::shortest(pose.x, shift.x) + "," + session::shortest(pose.y, shift.y) + "," +
         session::shortest(pose.theta);
}

std::string percent(double share) {
  return session::fixed(100.0 * share, 1) + " %";
}

std::string range(float least, float most, double shift) {
  return session::fixed(unshifted(least, shift), 2) + " to " +
         session::fixed(unshifted(most, shift), 2) + " m";
}

void printTable(const std::string& path, const OccupancyMap& map) {
  const Extent extent = extentOf(map);
  const Shares shares = sharesOf(map);
  const MapShift& shift = map.getShift();
  const float resolution = map.getResolution();
  const auto metres = [&](int cells) {
    return session::fixed(resolution * static_cast<float>(cells), 2);
  };
  std::cout << ko::log::onOneLine(path) << '\n';
  outlets::Table table({"", ""});
  table.add({"size", std::to_string(map.getWidth()) + " x " + std::to_string(map.getHeight()) +
                         " cells of " + session::shortest(resolution) + " m, " +
                         metres(map.getWidth()) + " x " + metres(map.getHeight()) + " m"});
  table.add({"origin", textOf(map.getOrigin(), shift) + " (m, m, rad)"});
  if (isShifted(shift))
    table.add({"shift", session::fixed(shift.x, 3) + "," + session::fixed(shift.y, 3) +
                            " (m, m): there the map's zero is held"});
  table.add({"extent", "x " + range(extent.least.x, extent.most.x, shift.x) + ", y " +
                           range(extent.least.y, extent.most.y, shift.y)});
  table.add({"cells", percent(shares.free) + " free, " + percent(shares.unknown) + " unknown, " +
                          percent(shares.occupied) + " occupied"});
  if (shares.free > 0.0)
    table.add({"free pose", textOf(session::findRoom(map), shift) + " (for --pose: m, m, rad)"});
  for (std::size_t i = 1; i < table.getLines().size(); ++i)
    std::cout << table.getLines()[i] << '\n';
}

Json toJson(const std::string& path, const OccupancyMap& map) {
  const Extent extent = extentOf(map);
  const Shares shares = sharesOf(map);
  const MapShift& shift = map.getShift();
  Json facts{{"path", path},
             {"width", map.getWidth()},
             {"height", map.getHeight()},
             {"resolution", outlets::toJson(map.getResolution())},
             {"origin", outlets::exactPoseOf(map.getOrigin(), shift)},
             {"extent",
              {{"minX", outlets::toJson(extent.least.x, shift.x)},
               {"maxX", outlets::toJson(extent.most.x, shift.x)},
               {"minY", outlets::toJson(extent.least.y, shift.y)},
               {"maxY", outlets::toJson(extent.most.y, shift.y)}}},
             {"free", shares.free},
             {"unknown", shares.unknown},
             {"occupied", shares.occupied},
             {"freePose",
              shares.free > 0.0 ? outlets::exactPoseOf(session::findRoom(map), shift) : Json()}};
  if (isShifted(shift)) facts["shift"] = {{"x", shift.x}, {"y", shift.y}};
  return facts;
}

void informOfMap(CommonOptions& options) {
  const outlets::Format format = outlets::parseFormat(options.format, kListFormats);
  const std::string path = naming("MAP", [&] { return session::findMap(*options.map); });
  options.map = path;
  const OccupancyMap map = robot::loadMap(path, options.findShift());
  if (format == outlets::Format::table) return printTable(path, map);
  std::cout << outlets::toText(toJson(path, map)) << '\n';
}

}  // namespace

void addMapCommand(CLI::App& program, const session::OpenOptions&, int&) {
  auto options = std::make_shared<CommonOptions>();
  options->map = "apartment";
  CLI::App* command = program.add_subcommand("map", "Show facts about a map (see map info)");
  command->require_subcommand(1);
  CLI::App* info = command->add_subcommand(
      "info", "Show the size, origin and free share of a map, and a free pose to start from");
  info->add_option("MAP", options->map,
                   "map_server map (YAML), or the name of one of the project's own")
      ->type_name("apartment|FILE")
      ->check(namesAFile)
      ->capture_default_str();
  addShift(*info, *options);
  addFormat(*info, *options, "table; json or jsonl: an object");
  info->callback([options] { informOfMap(*options); });
}

}  // namespace QV::app
