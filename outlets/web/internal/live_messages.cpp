#include "outlets/web/internal/live_messages.h"

#include <chrono>

#include "outlets/internal/base64.h"
#include "outlets/internal/family_colour.h"
#include "outlets/web/internal/depth_frames.h"
#include "outlets/web/internal/map_tiles.h"
#include "outlets/web/internal/page_points.h"
#include "outlets/web/internal/robot_outline.h"

namespace QV::outlets {
namespace {

template <typename T>
Json toJson(const std::optional<T>& value) {
  return value ? rounded(static_cast<double>(*value)) : Json();
}

Json toJson(const std::optional<Math::Position2D>& position) {
  if (!position) return nullptr;
  return {{"x", rounded(position->x)}, {"y", rounded(position->y)}};
}

Json toJson(const std::optional<session::SensorState::View>& view) {
  if (!view) return nullptr;
  Json json = roundedPoseOf(view->apex);
  json["angle"] = rounded(view->fieldOfView.angularRange);
  json["minRange"] = rounded(view->fieldOfView.minRange);
  json["maxRange"] = rounded(view->fieldOfView.maxRange);
  return json;
}

const char* getName(Model::PointMeaning meaning) {
  static const char* const names[] = {"arc", "scan", "zone", "sighting", "floor", "touch"};
  return names[static_cast<int>(meaning)];
}

Json toJson(const session::SensorState& sensor) {
  Json points = Json::array();
  for (const auto& point : pagePointsOf(sensor.marks)) {
    points.push_back(rounded(point.x));
    points.push_back(rounded(point.y));
  }
  return {{"name", sensor.name},
          {"family", sensor.family},
          {"started", sensor.started},
          {"enabled", sensor.enabled},
          {"diagnosis", sensor.diagnosis},
          {"subscribers", sensor.subscribers},
          {"rate", rounded(sensor.rate)},
          {"age", toJson(sensor.age)},
          {"nearest", toJson(sensor.nearest)},
          {"trouble", sensor.trouble},
          {"troubleAge", rounded(sensor.troubleAge)},
          {"health", QV::outlets::toJson(sensor.health)},
          {"fieldOfView", toJson(sensor.view)},
          {"means", getName(sensor.points)},
          {"points", std::move(points)}};
}

Json pairsOf(const std::vector<Math::Position2D>& positions) {
  Json pairs = Json::array();
  for (const auto& position : positions) {
    pairs.push_back({rounded(position.x), rounded(position.y)});
  }
  return pairs;
}

Json toJson(const session::TouchState& touch) {
  return {{"name", touch.name},
          {"x", rounded(touch.position.x)},
          {"y", rounded(touch.position.y)},
          {"since", rounded(touch.since)}};
}

Json toJson(const std::optional<session::RecordingPlace>& place) {
  if (!place) return {};
  return {{"time", rounded(place->time)}, {"length", rounded(place->length)}};
}

Json toJson(const ko::log::Record& line) {
  return {{"time", inNanoseconds(line.timestamp)},
          {"level", ko::log::getName(line.level)},
          {"category", line.category},
          {"method", line.method},
          {"message", line.message}};
}

Json toJson(const boost::shared_ptr<const OccupancyMap>& map, int levels) {
  if (!map) return {};
  return {{"width", map->getWidth()},
          {"height", map->getHeight()},
          {"resolution", QV::outlets::toJson(map->getResolution())},
          {"origin", exactPoseOf(map->getOrigin())},
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

template <typename T>
Json toArray(const std::vector<T>& values) {
  Json array = Json::array();
  for (const T& value : values) array.push_back(toJson(value));
  return array;
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
          {"map", toJson(robot.getMap(), mapLevels)},
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

std::string pageStateOf(const session::Snapshot& snapshot) {
  return toText({{"op", "state"},
                 {"time", inNanoseconds(snapshot.time)},
                 {"paused", snapshot.paused},
                 {"speed", snapshot.speed},
                 {"recording", toJson(snapshot.recording)},
                 {"pose", roundedPoseOf(snapshot.pose)},
                 {"velocity", roundedPoseOf(snapshot.velocity)},
                 {"goal", toJson(snapshot.goal)},
                 {"route", pairsOf(snapshot.route)},
                 {"sensors", toArray(snapshot.sensors)},
                 {"people", pairsOf(snapshot.people)},
                 {"touches", toArray(snapshot.touches)},
                 {"faults", snapshot.faults}});
}

std::string logMessage(const std::vector<ko::log::Record>& lines) {
  return toText({{"op", "log"}, {"lines", toArray(lines)}});
}

std::string depthMessage(const std::string& sensor, const DepthPicture& picture) {
  return toText({{"op", "depth"},
                 {"sensor", sensor},
                 {"png", toBase64(picture.png)},
                 {"width", picture.width},
                 {"height", picture.height},
                 {"components", picture.components},
                 {"beyond", picture.beyond}});
}

std::string refusedMessage(const std::string& op, const std::string& reason) {
  return toText({{"op", "refused"}, {"command", op}, {"message", reason}});
}

}  // namespace QV::outlets
