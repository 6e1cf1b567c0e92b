#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/math/position.h"
#include "platform/vision/internal/component_runs.h"
#include "platform/vision/qv_image.h"

namespace QV::sensor {

/**
 * Turns pixels of a depth image in millimetres into points in the camera's frame, in metres: x
 * along the optical axis, y to the left, z up; column width / 2 has y 0, row height / 2 has z 0.
 * A depth beyond kMaxDepth gives no point.
 */
class DepthProjection {
 public:
  /** Millimetres. */
  static constexpr std::uint16_t kMaxDepth = QV::kMaxDepth;

  /** The extent of the image, sideways and upwards, per unit of depth. */
  struct Extents {
    float xToZ = 0.0f;
    float yToZ = 0.0f;
  };

  /** A row of pixels: how far right of the axis each is, and how far above it all are. */
  struct Line {
    const std::uint16_t* pixels;
    const float* columns;
    int width;
    float up;
    Extents extents;
  };

  /** The part of a component's list of points that is not written yet. */
  struct Room {
    Math::Position3D* next = nullptr;
    Math::Position3D* end = nullptr;
  };

  /**
   * The pixels of a row that are not beyond kMaxDepth: 64 bits each, and how many lie before these.
   */
  struct Within {
    std::vector<std::uint64_t> bits;
    std::vector<int> before;
  };

  /** Prepares for images of one size. */
  void reset(cv::Size size, const Extents& extents);

  /** Counts the points that each of a row's runs gives. */
  void countPoints(const std::uint16_t* pixels, const vision::ComponentRuns::Row& runs,
                   int* counts);

  /**
   * Writes the points of a row's runs, whose pixels have a depth, into the room of each label,
   * which shrinks by them; none where there is none. Rooms are filled in the end: what lies in one
   * has no value until then.
   */
  void project(const std::uint16_t* pixels, int row, const vision::ComponentRuns::Row& runs,
               Room* rooms);

 private:
  Extents extents;
  float height = 0.0f;
  // The place of each column, in widths of the image, from -0.5 on.
  std::vector<float> columns;
  Within within;
};

}  // namespace QV::sensor
