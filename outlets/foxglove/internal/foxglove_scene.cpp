#include "outlets/foxglove/internal/foxglove_messages.h"
#include "outlets/foxglove/internal/foxglove_values.h"
#include "outlets/internal/family_colour.h"

namespace QV::outlets::foxglove {
namespace {

// A line through all of its points.
constexpr int kLineStrip = 0;
constexpr double kLinePixels = 1.5;
// Entities disappear unless they are sent again.
constexpr ko::Duration kEntityLifetime{500'000'000};

Json colourOf(const std::string& family) {
  const auto [red, green, blue] = outlets::colourOfFamily(family);
  return {{"r", red / 255.0}, {"g", green / 255.0}, {"b", blue / 255.0}, {"a", 1.0}};
}

// Returns the outline: apex, right side, arc, left side, apex.
Json outlineOf(const session::SensorState::View& view) {
  constexpr int kParts = 24;
  const auto& field = view.fieldOfView;
  Json points = Json::array();
  const auto add = [&](float range, float angle) {
    const auto place = view.apex * Math::Position2D::fromPolarCoordinates(range, angle);
    points.push_back({{"x", place.x}, {"y", place.y}, {"z", 0.0}});
  };
  add(0.0f, 0.0f);
  for (int i = 0; i <= kParts; ++i) {
    const float share = static_cast<float>(i) / kParts - 0.5f;
    add(field.maxRange, share * field.angularRange);
  }
  add(0.0f, 0.0f);
  return points;
}

Json entityOf(const session::SensorState& sensor, ko::Clock::time_point time) {
  const Json line = {{"type", kLineStrip},
                     {"pose", toJson(Math::Pose2D())},
                     {"thickness", kLinePixels},
                     {"scale_invariant", true},
                     {"points", outlineOf(*sensor.view)},
                     {"color", colourOf(sensor.family)},
                     {"colors", Json::array()},
                     {"indices", Json::array()}};
  Json entity = {{"timestamp", toJson(time)},
                 {"frame_id", "map"},
                 {"id", sensor.name},
                 {"lifetime", toJson(ko::Clock::time_point(kEntityLifetime))},
                 {"frame_locked", false}};
  for (const char* none :
       {"metadata", "arrows", "cubes", "spheres", "cylinders", "triangles", "texts", "models"}) {
    entity[none] = Json::array();
  }
  entity["lines"] = Json::array({line});
  return entity;
}

}  // namespace

std::string fieldsOfView(const session::Snapshot& snapshot) {
  Json entities = Json::array();
  for (const session::SensorState& sensor : snapshot.sensors) {
    if (sensor.started && sensor.view) entities.push_back(entityOf(sensor, snapshot.time));
  }
  return toText({{"deletions", Json::array()}, {"entities", std::move(entities)}});
}

}  // namespace QV::outlets::foxglove
