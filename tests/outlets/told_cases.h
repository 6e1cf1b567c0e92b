#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "platform/math/metrical_data.h"
#include "session/internal/place_marks.h"
#include "session/snapshot.h"

namespace QV::test {

/** A record of a sensor at (1, 2), which sees 2 m far along the x axis, and what it is shown as. */
struct ToldCase {
  const char* name;
  Model::PointMeaning meaning;
  std::vector<Math::Position3D> points;
  /** The marks in the map, in order; of an echo's arc the right end. */
  std::vector<Math::Position2D> marks;
  /** The places where a wrong reading of the points would leave a mark. */
  std::vector<Math::Position2D> bare;
};

constexpr float kAperture = 1.0f;
constexpr int kArcPoints = 15;

inline Math::Position2D onArc(float range, float angle) {
  return {1.0f + range * std::cos(angle), 2.0f + range * std::sin(angle)};
}

inline const std::vector<ToldCase>& toldCases() {
  using Model::PointMeaning;
  // The point lies just inside the outline of the field of view.
  const Math::Position2D besideMiss(2.9925f, 2.0f);
  static const std::vector<ToldCase> all = {
      {"LaserWithOneHit",
       PointMeaning::scan,
       {{1.5f, 0.0f, 0.0f}},
       {{2.5f, 2.0f}},
       {onArc(1.5f, 0.4f)}},
      {"ScanWithMisses",
       PointMeaning::scan,
       {{2.0f, 0.0f, 0.0f}, {1.0f, 0.3f, 0.0f}},
       {{2.0f, 2.3f}},
       {besideMiss}},
      {"Echo", PointMeaning::arc, {{1.5f, 0.0f, 0.0f}}, {onArc(1.5f, -0.5f)}, {}},
      {"EchoBeyondTheMaximum", PointMeaning::arc, {{2.1f, 0.0f, 0.0f}}, {}, {{3.1f, 2.0f}}},
      {"ZoneThatSeesNothing",
       PointMeaning::zone,
       {{2.0f, 0.0f, 0.0f}},
       {},
       {besideMiss, {2.0f, 2.0f}}},
      {"ZoneWithMotion", PointMeaning::zone, {{0.5f, 0.0f, 0.0f}}, {{1.5f, 2.0f}}, {}},
      {"Touch", PointMeaning::touch, {{-0.4f, 0.0f, 0.1f}}, {{0.6f, 2.0f}}, {}},
      {"People", PointMeaning::sighting, {{1.0f, 0.2f, 1.0f}}, {{2.0f, 2.2f}}, {onArc(1.0f, 0.0f)}},
  };
  return all;
}

/** A session's snapshot with the sensor that a case tells of, and no map. */
inline session::Snapshot snapshotOf(const ToldCase& told, const std::string& family) {
  const bool hasReach = told.meaning != Model::PointMeaning::touch;
  const Math::SensorFieldOfView2D fieldOfView(0.1f, hasReach ? 2.0f : 0.0f,
                                              hasReach ? kAperture : 0.0f, 5);
  const Math::MetricalData record{family, family, fieldOfView, {}, told.points, {}};
  session::Snapshot snapshot;
  snapshot.title = told.name;
  snapshot.frame = session::Frame::robot;
  snapshot.pose = {1.0f, 2.0f, 0.0f};
  session::SensorState sensor{family, family, true};
  sensor.points = told.meaning;
  sensor.marks = session::placeMarks(record, told.meaning, snapshot.pose, snapshot.frame);
  if (hasReach) sensor.view = session::SensorState::View{snapshot.pose, fieldOfView};
  sensor.records = {record};
  snapshot.sensors = {sensor};
  return snapshot;
}

}  // namespace QV::test
