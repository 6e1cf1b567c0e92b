#include "outlets/web/internal/live_messages.h"

#include "outlets/internal/base64.h"
#include "outlets/internal/json_values.h"
#include "outlets/web/internal/page_points.h"
#include "platform/navigation/internal/map_shift.h"

namespace QV::outlets {
namespace {

template <typename T>
Json toJson(const std::optional<T>& value) {
  return value ? rounded(static_cast<double>(*value)) : Json();
}

Json toJson(const std::optional<Math::Position2D>& position, const MapShift& shift) {
  if (!position) return nullptr;
  return {{"x", rounded(unshifted(position->x, shift.x))},
          {"y", rounded(unshifted(position->y, shift.y))}};
}

Json toJson(const std::optional<session::SensorState::View>& view, const MapShift& shift) {
  if (!view) return nullptr;
  Json json = roundedPoseOf(view->apex, shift);
  json["angle"] = rounded(view->fieldOfView.angularRange);
  json["minRange"] = rounded(view->fieldOfView.minRange);
  json["maxRange"] = rounded(view->fieldOfView.maxRange);
  return json;
}

const char* getName(Model::PointMeaning meaning) {
  static const char* const names[] = {"arc", "scan", "zone", "sighting", "floor", "touch"};
  return names[static_cast<int>(meaning)];
}

Json toJson(const session::SensorState& sensor, const MapShift& shift) {
  Json points = Json::array();
  for (const auto& point : pagePointsOf(sensor.marks)) {
    points.push_back(rounded(unshifted(point.x, shift.x)));
    points.push_back(rounded(unshifted(point.y, shift.y)));
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
          {"fieldOfView", toJson(sensor.view, shift)},
          {"means", getName(sensor.points)},
          {"points", std::move(points)}};
}

Json toJson(const std::map<std::string, sensor::SensorHealth>& unbuilt) {
  Json object = Json::object();
  for (const auto& [name, health] : unbuilt) object[name] = QV::outlets::toJson(health);
  return object;
}

Json toJson(const session::TouchState& touch, const MapShift& shift) {
  return {{"name", touch.name},
          {"x", rounded(unshifted(touch.position.x, shift.x))},
          {"y", rounded(unshifted(touch.position.y, shift.y))},
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

template <typename T>
Json toArray(const std::vector<T>& values, const MapShift& shift) {
  Json array = Json::array();
  for (const T& value : values) array.push_back(toJson(value, shift));
  return array;
}

}  // namespace

std::string pageStateOf(const session::Snapshot& snapshot) {
  const MapShift shift = snapshot.getShift();
  return toText({{"op", "state"},
                 {"time", inNanoseconds(snapshot.time)},
                 {"paused", snapshot.paused},
                 {"speed", snapshot.speed},
                 {"recording", toJson(snapshot.recording)},
                 {"pose", roundedPoseOf(snapshot.pose, shift)},
                 {"velocity", roundedPoseOf(snapshot.velocity)},
                 {"goal", toJson(snapshot.goal, shift)},
                 {"route", pairsOf(snapshot.route, shift)},
                 {"sensors", toArray(snapshot.sensors, shift)},
                 {"unbuilt", toJson(snapshot.unbuilt)},
                 {"people", pairsOf(snapshot.people, shift)},
                 {"touches", toArray(snapshot.touches, shift)},
                 {"faults", snapshot.faults}});
}

std::string logMessage(const std::vector<ko::log::Record>& lines) {
  Json told = Json::array();
  for (const auto& line : lines) told.push_back(toJson(line));
  return toText({{"op", "log"}, {"lines", std::move(told)}});
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
