#include "outlets/web/internal/live_messages.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "outlets/files/record_output.h"
#include "outlets/web/internal/base64.h"
#include "outlets/web/internal/map_picture.h"
#include "outlets/web/internal/page_points.h"

namespace QV::outlets {
namespace {

using nlohmann::ordered_json;

// Texts of the log may hold anything.
std::string toText(const ordered_json& message) {
  return message.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

// To a millimetre, a milliradian, a millisecond.
ordered_json toJson(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::round(value * 1000.0) / 1000.0;
}

template <typename T>
ordered_json toJson(const std::optional<T>& value) {
  return value ? toJson(static_cast<double>(*value)) : ordered_json();
}

ordered_json toJson(const Math::Pose2D& pose) {
  return {{"x", toJson(pose.x)}, {"y", toJson(pose.y)}, {"theta", toJson(pose.theta)}};
}

ordered_json toJson(const std::optional<Math::Position2D>& position) {
  if (!position) return nullptr;
  return {{"x", toJson(position->x)}, {"y", toJson(position->y)}};
}

ordered_json toJson(const std::optional<session::SensorState::View>& view) {
  if (!view) return nullptr;
  ordered_json json = toJson(view->apex);
  json["angle"] = toJson(view->fieldOfView.angularRange);
  json["minRange"] = toJson(view->fieldOfView.minRange);
  json["maxRange"] = toJson(view->fieldOfView.maxRange);
  return json;
}

ordered_json toJson(const session::SensorState& sensor) {
  ordered_json points = ordered_json::array();
  for (const auto& point : pagePointsOf(sensor.marks)) {
    points.push_back(toJson(point.x));
    points.push_back(toJson(point.y));
  }
  return {{"name", sensor.name},
          {"family", sensor.family},
          {"started", sensor.started},
          {"enabled", sensor.enabled},
          {"diagnosis", sensor.diagnosis},
          {"subscribers", sensor.subscribers},
          {"rate", toJson(sensor.rate)},
          {"age", toJson(sensor.age)},
          {"nearest", toJson(sensor.nearest)},
          {"trouble", sensor.trouble},
          {"fieldOfView", toJson(sensor.view)},
          {"points", std::move(points)}};
}

ordered_json toJson(const session::TouchState& touch) {
  return {{"name", touch.name},
          {"x", toJson(touch.position.x)},
          {"y", toJson(touch.position.y)},
          {"since", toJson(touch.since)}};
}

std::int64_t inNanoseconds(ko::Clock::time_point time) {
  return time.time_since_epoch().count();
}

ordered_json toJson(const ko::log::Record& line) {
  const bool verbose = line.level == ko::log::Level::verbose;
  return {{"time", inNanoseconds(line.timestamp)},
          {"level", verbose ? "debug" : ko::log::getName(line.level)},
          {"category", line.category},
          {"method", line.method},
          {"message", line.message}};
}

ordered_json toJson(const OccupancyMap& map) {
  const auto& origin = map.getOrigin();
  return {{"png", toBase64(makeMapPicture(map))},
          {"width", map.getWidth()},
          {"height", map.getHeight()},
          {"resolution", QV::outlets::toJson(map.getResolution())},
          {"origin", {{"x", origin.x}, {"y", origin.y}, {"theta", origin.theta}}}};
}

template <typename T>
ordered_json toArray(const std::vector<T>& values) {
  ordered_json array = ordered_json::array();
  for (const T& value : values) array.push_back(toJson(value));
  return array;
}

}  // namespace

std::string helloMessage(session::Session& robot) {
  return toText({{"op", "hello"},
                 {"world", robot.getFrame() == session::Frame::map ? "simulated" : "virtual"},
                 {"title", robot.getTitle()},
                 {"map", robot.getMap() ? toJson(*robot.getMap()) : ordered_json()},
                 {"radius", toJson(robot.getRadius())},
                 {"canDrive", true},
                 {"hasPeople", !robot.look().people.empty()},
                 {"families", robot.getManager().getFamilyNames()}});
}

std::string stateMessage(const session::Snapshot& snapshot) {
  ordered_json people = ordered_json::array();
  for (const auto& person : snapshot.people) {
    people.push_back({toJson(person.x), toJson(person.y)});
  }
  return toText({{"op", "state"},
                 {"time", inNanoseconds(snapshot.time)},
                 {"paused", snapshot.paused},
                 {"speed", snapshot.speed},
                 {"pose", toJson(snapshot.pose)},
                 {"velocity", toJson(snapshot.velocity)},
                 {"goal", toJson(snapshot.goal)},
                 {"sensors", toArray(snapshot.sensors)},
                 {"people", std::move(people)},
                 {"touches", toArray(snapshot.touches)}});
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
