#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/math/transform.h"
#include "robot/world/scene/internal/scene.h"

namespace QV::robot {

/** The optics of a depth camera. */
struct DepthOptics {
  /** Radians. */
  float horizontalFOV;
  float verticalFOV;
  /** Metres along the optical axis; nothing is seen outside of them. */
  float minDepth;
  float maxDepth;
};

/**
 * Shows a scene as a depth camera sees it: millimetres along the optical axis, 0 where there is
 * nothing to see. A pixel looks through its upper left corner, the middle of the image straight
 * ahead. The camera's frame looks along x, z up; it may look up or down, a tilt to the side is
 * ignored. For one thread at a time.
 */
class QV_API DepthRenderer {
 public:
  /** The direction of a row: metres forward and up for each metre of depth. */
  struct Row {
    float forward;
    float up;
  };

  /** `scene` must outlive it. */
  DepthRenderer(const Scene& scene, const DepthOptics& optics);

  /** Fills an image of any size; `camera` is its frame in the map. */
  void render(cv::Mat_<std::uint16_t>& image, const Math::Transform& camera, const People& people);

 private:
  /** A box, a person or a hole as one column sees it: metres forward in the plane, and heights. */
  struct Piece {
    Stretch forward;
    float bottom;
    float top;
  };

  /** The things that stand in one vertical plane through the camera, but for the wall. */
  struct Column {
    std::vector<Piece> solids;
    std::vector<Piece> holes;

    bool isEmpty() const { return solids.empty() && holes.empty(); }
  };

  void xAim(const cv::Size& newSize, const Math::Transform& camera);
  Row xRowAt(int row) const;
  void xLookAround(const People& people);
  void xLookAlong(float aside, const People& people);
  void xDrawRow(std::uint16_t* pixels, const Row& row);
  void xChooseColumns(const Row& row);
  float xFloorDepth(const Row& row) const;
  /** Returns the depth of the floor, its holes and what stands on it; not that of the wall. */
  float xDepthBefore(const Row& row, const Column& column) const;

  const Scene& scene;
  const DepthOptics optics;
  /** Metres up for each metre forward, along the upper edge of the image. */
  const float steepest;

  // The state of the image in progress.
  cv::Size size;
  Math::Position3D position;
  float heading = 0.0f;
  float sinPitch = 0.0f;
  float cosPitch = 1.0f;
  /** Metres aside for each metre forward, from one column to the next. */
  float spacing = 0.0f;
  std::size_t middleColumn = 0;
  /** The distances forward to the wall, one for each column. */
  std::vector<float> walls;
  std::vector<Column> columns;
  /** The columns for the pixels of a row that looks so far forward. */
  std::vector<std::size_t> columnOfPixel;
  std::vector<std::uint16_t> wallOfPixel;
  /** Those whose columns hold more than a wall. */
  std::vector<std::size_t> busyPixels;
  float columnsChosenFor = 0.0f;
};

}  // namespace QV::robot
