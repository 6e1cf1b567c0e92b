#include "outlets/picture/run_picture.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <stdexcept>
#include <unistd.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "outlets/picture/internal/legend.h"
#include "outlets/picture/internal/map_canvas.h"
#include "outlets/picture/internal/palette.h"
#include "platform/model/sensor_kinds.h"
#include "session/internal/place_marks.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

constexpr int kWidestPixels = 1400;
// Larger maps, and ways far from the map, are shown around the robot's way only, metres.
constexpr double kWidestArea = 45.0;
constexpr float kRobotRadius = 0.2f;
// From so many points on they are drawn small.
constexpr std::size_t kDense = 500;

typedef std::vector<Math::Position2D> Positions;

struct PlacedRecord {
  std::string family;
  Math::SensorFieldOfView2D fieldOfView;
  Math::Pose2D origin;
  session::Marks marks;
};
typedef std::vector<PlacedRecord> PlacedRecords;

// Records alone don't say what a simulated sensor reports.
Model::PointMeaning meaningOf(const Math::MetricalData& record, session::Frame frame) {
  if (frame == session::Frame::map) {
    return record.points.size() == 1 ? Model::PointMeaning::arc : Model::PointMeaning::scan;
  }
  const auto* kind = Model::SensorKinds::standard().findFamily(record.familyName);
  return kind ? kind->points : Model::PointMeaning::scan;
}

Positions arc(const PlacedRecord& record, float range) {
  constexpr int kSteps = 72;
  Positions positions;
  for (int i = 0; i <= kSteps; ++i) {
    const float angle = record.fieldOfView.angularRange * (static_cast<float>(i) / kSteps - 0.5f);
    positions.push_back(record.origin * Math::Position2D::fromPolarCoordinates(range, angle));
  }
  return positions;
}

double sideOf(const WorldArea& area) {
  return std::max(area.right - area.left, area.top - area.bottom);
}

WorldArea withPosition(const WorldArea& area, const Math::Position2D& position, double margin) {
  return {std::min(area.left, position.x - margin), std::min(area.bottom, position.y - margin),
          std::max(area.right, position.x + margin), std::max(area.top, position.y + margin)};
}

// The robot and its fans show whole, also at the map's edge or outside it.
WorldArea withReading(WorldArea area, const Math::Pose2D& robot, const PlacedRecords& records) {
  constexpr double kMargin = 0.3;
  area = withPosition(area, Math::position2DFromPose2D(robot), kMargin);
  for (const auto& record : records) {
    for (const auto& position : arc(record, record.fieldOfView.maxRange)) {
      area = withPosition(area, position, kMargin);
    }
  }
  return area;
}

WorldArea areaToShow(const RunPicture& picture, const PlacedRecords& records) {
  const WorldArea whole = areaOf(picture.map);
  if (sideOf(whole) <= kWidestArea) {
    const WorldArea all = withReading(whole, picture.poses.back(), records);
    if (sideOf(all) <= 2.0 * kWidestArea) return all;
  }
  double margin = 3.0;
  for (const auto& record : records) margin = std::max(margin, record.fieldOfView.maxRange + 1.0);
  WorldArea area{INFINITY, INFINITY, -INFINITY, -INFINITY};
  for (const auto& pose : picture.poses) {
    area = withPosition(area, Math::position2DFromPose2D(pose), margin);
  }
  return area;
}

bool isFullTurn(const Math::SensorFieldOfView2D& fov) {
  return fov.angularRange >= 2.0f * std::numbers::pi_v<float>;
}

// Sensors in one place share a fan, and so do the records of one sensor.
bool isSameFan(const PlacedRecord& a, const PlacedRecord& b) {
  constexpr float kNear = 0.2f;
  const Math::Pose2D apart = Math::pinv(a.origin) * b.origin;
  return a.family == b.family && std::hypot(apart.x, apart.y) < kNear &&
         std::abs(apart.theta) < kNear && a.fieldOfView.maxRange == b.fieldOfView.maxRange &&
         a.fieldOfView.angularRange == b.fieldOfView.angularRange;
}

void drawFieldOfView(MapCanvas& canvas, const PlacedRecord& record) {
  Positions outline = arc(record, record.fieldOfView.maxRange);
  if (!isFullTurn(record.fieldOfView)) {
    outline.insert(outline.begin(), Math::position2DFromPose2D(record.origin));
    outline.push_back(Math::position2DFromPose2D(record.origin));
  }
  const cv::Scalar colour = colourOfFamily(record.family);
  canvas.fillPolygon(outline, colour, 0.13);
  canvas.drawPolyline(outline, colour, 1);
}

void drawFieldsOfView(MapCanvas& canvas, const PlacedRecords& records) {
  for (auto record = records.begin(); record != records.end(); ++record) {
    const auto isDrawn = [&](const PlacedRecord& other) { return isSameFan(other, *record); };
    if (std::none_of(records.begin(), record, isDrawn)) drawFieldOfView(canvas, *record);
  }
}

void drawPoints(MapCanvas& canvas, const PlacedRecord& record) {
  const cv::Scalar colour = colourOfFamily(record.family);
  const session::Marks& marks = record.marks;
  for (const auto& echo : marks.echoes) canvas.drawPolyline(arc(record, echo.range), colour, 4);
  const double radius = marks.hits.size() > kDense ? 1.5 : 3.5;
  for (const auto& hit : marks.hits) canvas.drawDot({hit.x, hit.y}, radius, colour);
  for (const auto& miss : marks.misses) canvas.drawDot({miss.x, miss.y}, 1.5, colour);
}

void drawRobot(MapCanvas& canvas, const Math::Pose2D& robot) {
  const double radius = std::max(kRobotRadius * canvas.getPixelsPerMetre(), 5.0);
  canvas.drawDot(Math::position2DFromPose2D(robot), radius, kInk);
  canvas.drawDot(Math::position2DFromPose2D(robot), radius - 2.0, kPaper);
  const auto length = static_cast<float>(radius / canvas.getPixelsPerMetre());
  canvas.drawPolyline({Math::position2DFromPose2D(robot), robot * Math::Position2D(length, 0.0f)},
                      kInk, 3);
}

void drawPath(MapCanvas& canvas, const std::vector<Math::Pose2D>& poses) {
  Positions path;
  for (const auto& pose : poses) path.push_back(Math::position2DFromPose2D(pose));
  canvas.drawPolyline(path, kPath, 3);
  canvas.drawDot(path.front(), 6.0, kPath);
}

PlacedRecords placeAll(const RunPicture& picture) {
  PlacedRecords placed;
  for (const auto& record : picture.records) {
    const Math::Pose2D& robot = picture.poses.back();
    placed.push_back(
        {record.familyName, record.fieldOfView, session::findOrigin(record, robot, picture.frame),
         session::placeMarks(record, meaningOf(record, picture.frame), robot, picture.frame)});
  }
  std::stable_sort(placed.begin(), placed.end(), [](const auto& a, const auto& b) {
    return a.fieldOfView.maxRange > b.fieldOfView.maxRange;
  });
  return placed;
}

}  // namespace

void checkPicturePath(const std::string& path) {
  const std::filesystem::path file(path);
  if (file.extension() != ".png")
    throw session::UsageError(path + ": a path that ends in .png expected");
  const auto folder = file.has_parent_path() ? file.parent_path().string() : ".";
  if (std::filesystem::is_directory(folder) && access(folder.c_str(), W_OK) == 0) return;
  throw session::UsageError(path + ": can't be written, a folder that can be expected");
}

void writePicture(const RunPicture& picture, const std::string& path) {
  const PlacedRecords records = placeAll(picture);
  MapCanvas canvas(picture.map, areaToShow(picture, records), kWidestPixels);
  drawFieldsOfView(canvas, records);
  if (picture.poses.size() > 1) drawPath(canvas, picture.poses);
  for (const auto& record : records) drawPoints(canvas, record);
  drawRobot(canvas, picture.poses.back());
  const cv::Mat page = withLegend(canvas, picture);
  if (!cv::imwrite(path, page)) throw std::runtime_error(path + ": can't be written");
}

}  // namespace QV::outlets
