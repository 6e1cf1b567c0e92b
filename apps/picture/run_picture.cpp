#include "apps/picture/run_picture.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <stdexcept>
#include <unistd.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "apps/output/number_text.h"
#include "apps/picture/legend.h"
#include "apps/picture/map_canvas.h"
#include "apps/picture/palette.h"
#include "apps/usage_error.h"

namespace QV::app {
namespace {

constexpr int kWidestPixels = 1400;
// Larger maps, and ways far from the map, are shown around the robot's way only, metres.
constexpr double kWidestArea = 45.0;
constexpr float kRobotRadius = 0.2f;

typedef std::vector<Math::Position2D> Positions;

// Simulated fans look along the robot's heading, whatever their mounting.
Positions arc(const Math::Pose2D& robot, const Math::SensorFieldOfView2D& fov, float range) {
  constexpr int kSteps = 72;
  Positions positions;
  for (int i = 0; i <= kSteps; ++i) {
    const float angle = fov.angularRange * (static_cast<float>(i) / kSteps - 0.5f);
    positions.push_back(robot * Math::Position2D::fromPolarCoordinates(range, angle));
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
WorldArea withReading(WorldArea area, const RunPicture& picture) {
  constexpr double kMargin = 0.3;
  const Math::Pose2D robot = picture.poses.back();
  area = withPosition(area, Math::position2DFromPose2D(robot), kMargin);
  for (const auto& record : picture.records) {
    for (const auto& position : arc(robot, record.fieldOfView, record.fieldOfView.maxRange)) {
      area = withPosition(area, position, kMargin);
    }
  }
  return area;
}

WorldArea areaToShow(const RunPicture& picture) {
  const WorldArea whole = areaOf(picture.map);
  if (sideOf(whole) <= kWidestArea) {
    const WorldArea all = withReading(whole, picture);
    if (sideOf(all) <= 2.0 * kWidestArea) return all;
  }
  double margin = 3.0;
  for (const auto& record : picture.records) {
    margin = std::max(margin, record.fieldOfView.maxRange + 1.0);
  }
  WorldArea area{INFINITY, INFINITY, -INFINITY, -INFINITY};
  for (const auto& pose : picture.poses) {
    area = withPosition(area, Math::position2DFromPose2D(pose), margin);
  }
  return area;
}

bool isFullTurn(const Math::SensorFieldOfView2D& fov) {
  return fov.angularRange >= 2.0f * std::numbers::pi_v<float>;
}

void drawFieldOfView(MapCanvas& canvas, const Math::Pose2D& robot,
                     const Math::MetricalData& record) {
  Positions outline = arc(robot, record.fieldOfView, record.fieldOfView.maxRange);
  if (!isFullTurn(record.fieldOfView)) {
    outline.insert(outline.begin(), Math::position2DFromPose2D(robot));
    outline.push_back(Math::position2DFromPose2D(robot));
  }
  const cv::Scalar colour = colourOfFamily(record.familyName);
  canvas.fillPolygon(outline, colour, 0.13);
  canvas.drawPolyline(outline, colour, 1);
}

// A nearest echo has a range and no direction: an arc. Other points stand where they were measured.
void drawPoints(MapCanvas& canvas, const Math::Pose2D& robot, const Math::MetricalData& record) {
  const cv::Scalar colour = colourOfFamily(record.familyName);
  if (record.points.size() == 1) {
    canvas.drawPolyline(arc(robot, record.fieldOfView, record.points[0].x), colour, 4);
    return;
  }
  const float limit = record.fieldOfView.maxRange * (1.0f - 1e-5f);
  for (const auto& point : record.points) {
    const Math::Position2D position(point.x, point.y);
    const bool miss = Math::norm(position) >= limit;
    canvas.drawDot(robot * position, miss ? 1.5 : 3.5, colour);
  }
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

bool isWider(const Math::MetricalData& a, const Math::MetricalData& b) {
  return a.fieldOfView.maxRange > b.fieldOfView.maxRange;
}

}  // namespace

void checkPicturePath(const std::string& path) {
  const std::filesystem::path file(path);
  if (file.extension() != ".png") throw UsageError(path + ": a path that ends in .png expected");
  const auto folder = file.has_parent_path() ? file.parent_path().string() : ".";
  if (std::filesystem::is_directory(folder) && access(folder.c_str(), W_OK) == 0) return;
  throw UsageError(path + ": can't be written, a folder that can be expected");
}

void writePicture(const RunPicture& picture, const std::string& path) {
  MapCanvas canvas(picture.map, areaToShow(picture), kWidestPixels);
  const Math::Pose2D robot = picture.poses.back();
  auto records = picture.records;
  std::stable_sort(records.begin(), records.end(), isWider);
  for (const auto& record : records) drawFieldOfView(canvas, robot, record);
  if (picture.poses.size() > 1) drawPath(canvas, picture.poses);
  for (const auto& record : records) drawPoints(canvas, robot, record);
  drawRobot(canvas, robot);
  const cv::Mat page = withLegend(canvas, picture.title, picture.records, picture.poses.size() > 1);
  if (!cv::imwrite(path, page)) throw std::runtime_error(path + ": can't be written");
}

}  // namespace QV::app
