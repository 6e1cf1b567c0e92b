#include "outlets/picture/internal/draw_session.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "outlets/picture/internal/legend.h"
#include "outlets/picture/internal/map_canvas.h"
#include "outlets/picture/internal/palette.h"

namespace QV::outlets {
namespace {

constexpr int kWidestPixels = 1400;
constexpr int kArcPositions = 73;
constexpr float kRobotRadius = 0.2f;
// The number of points from which on they are drawn small.
constexpr std::size_t kDense = 500;

using Positions = std::vector<Math::Position2D>;
using Sensors = std::vector<session::SensorState>;

Positions fromAbove(const std::vector<Math::Position3D>& positions) {
  Positions flat;
  for (const auto& position : positions) flat.emplace_back(position.x, position.y);
  return flat;
}

bool isFullTurn(const Math::SensorFieldOfView2D& fov) {
  return fov.angularRange >= 2.0f * std::numbers::pi_v<float>;
}

bool isFilledZone(const session::SensorState& sensor) {
  return sensor.points == Model::PointMeaning::zone && !sensor.marks.hits.empty();
}

// Sensors in one place share a fan, unless one reports something by its fan.
bool isSameFan(const session::SensorState& a, const session::SensorState& b) {
  constexpr float kNear = 0.2f;
  if (!a.view || !b.view || a.family != b.family || isFilledZone(a) || isFilledZone(b))
    return false;
  const Math::Pose2D apart = Math::pinv(a.view->apex) * b.view->apex;
  return std::hypot(apart.x, apart.y) < kNear && std::abs(apart.theta) < kNear &&
         a.view->fieldOfView.maxRange == b.view->fieldOfView.maxRange &&
         a.view->fieldOfView.angularRange == b.view->fieldOfView.angularRange;
}

void drawFieldOfView(MapCanvas& canvas, const session::SensorState& sensor) {
  const auto& view = *sensor.view;
  Positions outline = arcOf(view, view.fieldOfView.maxRange);
  if (!isFullTurn(view.fieldOfView)) {
    outline.insert(outline.begin(), Math::position2DFromPose2D(view.apex));
    outline.push_back(Math::position2DFromPose2D(view.apex));
  }
  const cv::Scalar colour = paintOf(sensor.family);
  canvas.fillPolygon(outline, colour, isFilledZone(sensor) ? 0.5 : 0.13);
  canvas.drawPolyline(outline, colour, 1);
}

void drawFieldsOfView(MapCanvas& canvas, const Sensors& sensors) {
  for (auto sensor = sensors.begin(); sensor != sensors.end(); ++sensor) {
    const auto isDrawn = [&](const session::SensorState& other) {
      return isSameFan(other, *sensor);
    };
    if (sensor->view && std::none_of(sensors.begin(), sensor, isDrawn)) {
      drawFieldOfView(canvas, *sensor);
    }
  }
}

void drawMarks(MapCanvas& canvas, const session::SensorState& sensor) {
  const cv::Scalar colour = paintOf(sensor.family);
  const session::Marks& marks = sensor.marks;
  for (const auto& echo : marks.echoes) {
    canvas.drawPolyline(fromAbove(positionsOn(echo, kArcPositions)), colour, 4);
  }
  const double radius = marks.hits.size() > kDense ? 1.5 : 3.5;
  for (const auto& position : fromAbove(marks.hits)) canvas.drawDot(position, radius, colour);
}

void drawRobot(MapCanvas& canvas, const Math::Pose2D& robot) {
  const double radius = std::max(kRobotRadius * canvas.getPixelsPerMetre(), 5.0);
  canvas.drawDot(Math::position2DFromPose2D(robot), radius, kInk);
  canvas.drawDot(Math::position2DFromPose2D(robot), radius - 2.0, kPaper);
  const auto length = static_cast<float>(radius / canvas.getPixelsPerMetre());
  canvas.drawPolyline({Math::position2DFromPose2D(robot), robot * Math::Position2D(length, 0.0f)},
                      kInk, 3);
}

void drawWay(MapCanvas& canvas, const std::vector<Math::Pose2D>& way) {
  Positions path;
  for (const auto& pose : way) path.push_back(Math::position2DFromPose2D(pose));
  canvas.drawPolyline(path, kPath, 3);
  canvas.drawDot(path.front(), 6.0, kPath);
}

// Sensors of short reach are drawn over those of long reach.
Sensors withLongReachFirst(Sensors sensors) {
  const auto reachOf = [](const session::SensorState& sensor) {
    return sensor.view ? sensor.view->fieldOfView.maxRange : 0.0f;
  };
  std::stable_sort(sensors.begin(), sensors.end(),
                   [&reachOf](const auto& a, const auto& b) { return reachOf(a) > reachOf(b); });
  return sensors;
}

}  // namespace

cv::Mat drawSession(const std::vector<Math::Pose2D>& way, const session::Snapshot& snapshot) {
  const Sensors sensors = withLongReachFirst(snapshot.sensors);
  MapCanvas canvas(snapshot.map.get(), findAreaToShow(way, snapshot), kWidestPixels);
  drawFieldsOfView(canvas, sensors);
  if (way.size() > 1) drawWay(canvas, way);
  for (const auto& sensor : sensors) drawMarks(canvas, sensor);
  drawRobot(canvas, snapshot.pose);
  return withLegend(canvas, snapshot, way.size() > 1);
}

}  // namespace QV::outlets
