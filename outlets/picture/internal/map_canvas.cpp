#include "outlets/picture/internal/map_canvas.h"

#include <algorithm>
#include <cmath>

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
cv::Mat coloured(const cv::Mat& grey) {
  cv::Mat table(1, 256, CV_8UC3);
  for (int level = 0; level < 256; ++level) {
    const double share = level / 255.0;
    cv::Scalar colour = kInk * (1.0 - share) + kPaper * share;
    if (level > 120 && level < 136) colour = kUnknown;
    table.at<cv::Vec3b>(level) =
        cv::Vec3b(cv::saturate_cast<uchar>(colour[0]), cv::saturate_cast<uchar>(colour[1]),
                  cv::saturate_cast<uchar>(colour[2]));
  }
  cv::Mat three;
  cv::Mat result;
  cv::cvtColor(grey, three, cv::COLOR_GRAY2BGR);
  cv::LUT(three, table, result);
  return result;
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
  const double x0 = area.left + 0.5 / scale - origin.x;
  const double y0 = area.top - 0.5 / scale - origin.y;
  const cv::Matx23d toCell(c / scale, -s / scale, c * x0 + s * y0 - 0.5, -s / scale, -c / scale,
                           -s * x0 + c * y0 - 0.5);
  cv::warpAffine(coloured(grey), image, toCell, image.size(),
                 cv::INTER_NEAREST | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT, kUnknown);
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
