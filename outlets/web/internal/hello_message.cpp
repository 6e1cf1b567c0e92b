#include "outlets/web/internal/hello_message.h"

#include <chrono>

#include "outlets/internal/family_colour.h"
#include "outlets/web/internal/depth_frames.h"
#include "outlets/web/internal/map_tiles.h"
#include "outlets/web/internal/robot_outline.h"

namespace QV::outlets {
namespace {

Json describeMap(const boost::shared_ptr<const OccupancyMap>& map, int levels) {
  if (!map) return {};
  return {{"width", map->getWidth()},
          {"height", map->getHeight()},
          {"resolution", toJson(map->getResolution())},
          {"origin", exactPoseOf(map->getOrigin(), map->getShift())},
          {"tile", MapTiles::kSide},
          {"levels", levels}};
}

// The kinds that make sense for each sensor that can be made to fail.
Json faultsOf(const session::Session& robot) {
  Json faults = Json::object();
  for (const std::string& sensor : robot.getFaultySensors()) {
    Json kinds = Json::array();
    for (const auto kind : robot.getPossibleFaults(sensor)) kinds.push_back(getName(kind));
    faults[sensor] = std::move(kinds);
  }
  return faults;
}

// Another one after a restart.
std::string newRun() {
  return std::to_string(std::chrono::system_clock::now().time_since_epoch().count());
}

}  // namespace

Json describeWorld(session::Session& robot, int mapLevels) {
  Json colours = Json::object();
  const auto families = robot.getManager().getFamilyNames();
  for (const std::string& family : families) colours[family] = toText(colourOfFamily(family));
  const std::string depthSensor = findDepthSensor(robot);
  const Model::Robot* const body = robot.getDescription();
  return {{"op", "hello"},
          {"world", robot.getFrame() == session::Frame::map ? "simulated" : "virtual"},
          {"title", robot.getTitle()},
          {"run", newRun()},
          {"map", describeMap(robot.getMap(), mapLevels)},
          {"radius", rounded(robot.getRadius())},
          {"outline", pairsOf(body ? outlineOf(*body) : std::vector<Math::Position2D>())},
          {"canDrive", !robot.getLength()},
          {"hasPeople", !robot.look().people.empty()},
          {"families", families},
          {"colours", std::move(colours)},
          {"faults", faultsOf(robot)},
          {"depthSensor", depthSensor.empty() ? Json() : Json(depthSensor)}};
}

std::string helloMessage(Json world, const std::string& subscriber) {
  world["subscriber"] = subscriber;
  return toText(world);
}

}  // namespace QV::outlets
