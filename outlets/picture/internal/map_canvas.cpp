#include "outlets/picture/internal/map_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <opencv2/imgproc.hpp>

#include "outlets/picture/internal/palette.h"

namespace QV::outlets {
namespace {

constexpr int kShift = 4;

// Occupancy as grey levels, row 0 of the map first.
cv::Mat greyLevels(const OccupancyMap& map) {
  cv::Mat grey(map.getHeight(), map.getWidth(), CV_8UC1);
  for (int row = 0; row < map.getHeight(); ++row) {
    for (int column = 0; column < map.getWidth(); ++column) {
      const float occupancy = map.getOccupancy(column, row);
      grey.at<uchar>(row, column) = static_cast<uchar>(std::lround(255.0f * (1.0f - occupancy)));
    }
  }
  return grey;
}

// White to ink; unknown, half way between, in a light grey of its own.
std::array<cv::Vec3b, 256> makeColours() {
  std::array<cv::Vec3b, 256> colours;
  for (std::size_t level = 0; level < colours.size(); ++level) {
    const double share = static_cast<double>(level) / 255.0;
    cv::Scalar colour = kInk * (1.0 - share) + kPaper * share;
    if (level > 120 && level < 136) colour = kUnknown;
    colours[level] =
        cv::Vec3b(cv::saturate_cast<uchar>(colour[0]), cv::saturate_cast<uchar>(colour[1]),
                  cv::saturate_cast<uchar>(colour[2]));
  }
  return colours;
}

}  // namespace

MapCanvas::MapCanvas(const OccupancyMap* map, const WorldArea& area, int widest) : area(area) {
  const double width = area.right - area.left;
  const double height = area.top - area.bottom;
  scale = widest / std::max(width, height);
  const cv::Size size(std::max(1, static_cast<int>(width * scale)),
                      std::max(1, static_cast<int>(height * scale)));
  image = cv::Mat(size, CV_8UC3, kUnknown);
  if (map) xDrawMap(*map);
}

void MapCanvas::xDrawMap(const OccupancyMap& map) {
  cv::Mat grey = greyLevels(map);
  const double pixelsPerCell = scale * map.getResolution();
  if (pixelsPerCell < 1.0) {
    // Walls one cell thick would fall between the pixels.
    const double most = std::max(grey.cols, grey.rows);
    const int reach = static_cast<int>(std::min(std::ceil(1.0 / pixelsPerCell), most));
    cv::erode(grey, grey, cv::getStructuringElement(cv::MORPH_RECT, {reach, reach}));
  }
  // Maps a pixel's centre to the world, then to the cell that contains it.
  const Math::Pose2D origin = map.getOrigin();
  const double c = std::cos(origin.theta) / map.getResolution();
  const double s = std::sin(origin.theta) / map.getResolution();
  const auto colours = makeColours();
  // By hand, since OpenCV takes no more than 32766 columns or rows of a map here.
  for (int row = 0; row < image.rows; ++row) {
    for (int column = 0; column < image.cols; ++column) {
      const double x = area.left + (column + 0.5) / scale - origin.x;
      const double y = area.top - (row + 0.5) / scale - origin.y;
      const double cellX = std::floor(c * x + s * y);
      const double cellY = std::floor(c * y - s * x);
      const bool isInside = cellX >= 0.0 && cellX < grey.cols && cellY >= 0.0 && cellY < grey.rows;
      if (!isInside) continue;
      const uchar level = grey.at<uchar>(static_cast<int>(cellY), static_cast<int>(cellX));
      image.at<cv::Vec3b>(row, column) = colours[level];
    }
  }
}

cv::Point MapCanvas::toPixel(const Math::Position2D& world) const {
  constexpr double kMost = 1e6;
  const double x = std::clamp((world.x - area.left) * scale - 0.5, -kMost, kMost);
  const double y = std::clamp((area.top - world.y) * scale - 0.5, -kMost, kMost);
  return {static_cast<int>(std::lround(x * (1 << kShift))),
          static_cast<int>(std::lround(y * (1 << kShift)))};
}

void MapCanvas::drawPolyline(const std::vector<Math::Position2D>& world, const cv::Scalar& colour,
                             int thickness) {
  std::vector<cv::Point> pixels;
  pixels.reserve(world.size());
  for (const auto& position : world) pixels.push_back(toPixel(position));
  cv::polylines(image, pixels, false, colour, thickness, cv::LINE_AA, kShift);
}

void MapCanvas::fillPolygon(const std::vector<Math::Position2D>& world, const cv::Scalar& colour,
                            double opacity) {
  std::vector<cv::Point> pixels;
  pixels.reserve(world.size());
  for (const auto& position : world) pixels.push_back(toPixel(position));
  cv::Mat filled = image.clone();
  cv::fillPoly(filled, std::vector<std::vector<cv::Point>>{pixels}, colour, cv::LINE_AA, kShift);
  cv::addWeighted(filled, opacity, image, 1.0 - opacity, 0.0, image);
}

void MapCanvas::drawDot(const Math::Position2D& world, double radiusPixels,
                        const cv::Scalar& colour) {
  cv::circle(image, toPixel(world), static_cast<int>(std::lround(radiusPixels * (1 << kShift))),
             colour, cv::FILLED, cv::LINE_AA, kShift);
}

}  // namespace QV::outlets
