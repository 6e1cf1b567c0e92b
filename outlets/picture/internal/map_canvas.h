#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "outlets/picture/internal/world_area.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::outlets {

/** A picture of an area of the world from above: the map, and what is drawn over it in metres. */
class MapCanvas {
 public:
  /** Shows `area` of `map`, if there is one, with `widest` pixels on the longer side. */
  MapCanvas(const OccupancyMap* map, const WorldArea& area, int widest);

  cv::Mat& getImage() { return image; }
  double getPixelsPerMetre() const { return scale; }

  /** Returns pixels, with 4 fractional bits as OpenCV's drawing takes them (`shift` = 4). */
  cv::Point toPixel(const Math::Position2D& world) const;

  void drawPolyline(const std::vector<Math::Position2D>& world, const cv::Scalar& colour,
                    int thickness);
  /** `opacity` from 0 to 1. */
  void fillPolygon(const std::vector<Math::Position2D>& world, const cv::Scalar& colour,
                   double opacity);
  void drawDot(const Math::Position2D& world, double radiusPixels, const cv::Scalar& colour);

 private:
  void xDrawMap(const OccupancyMap& map);

  WorldArea area;
  double scale;
  cv::Mat image;
};

}  // namespace QV::outlets
