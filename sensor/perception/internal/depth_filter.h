#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/math/position.h"
#include "platform/vision/internal/component_labeler.h"
#include "sensor/perception/internal/depth_projection.h"
#include "sensor/perception/internal/spare_points.h"

namespace QV::sensor {

/**
 * Makes lists of points of the components of depth images, 16-bit, in millimetres. Keeps its
 * working memory, so that images of one size cost no allocation. One thread at a time.
 */
class DepthFilter {
 public:
  using Points = SparePoints::Points;
  using Extents = DepthProjection::Extents;

  /** Appends the points of each component of at least `blobSize` pixels that give one. */
  void filter(const cv::Mat& depth, const Extents& extents, int blobSize,
              std::vector<Points>& scans);
  /** Filters as `filter` does, with the components given: `labels` has the size of `depth`, none
   * negative. */
  void project(const cv::Mat& depth, const cv::Mat_<int>& labels, const Extents& extents,
               int blobSize, std::vector<Points>& scans);

  /** The last pixel of the last image that was too far to give a point. */
  std::optional<std::uint16_t> getPixelBeyond() const { return pixelBeyond; }

  /** Takes points that nobody needs any more, for their memory. */
  void give(Points&& points) { spares.give(std::move(points)); }
  /** Gives that memory back. */
  void forgetSpares() { spares.trim(0); }

 private:
  struct Component {
    int points = 0;
    /** The first of its runs that gives any. */
    int firstRun = 0;
  };

  void xProjectRuns(const cv::Mat& depth, const vision::ComponentRuns& runs, const Extents& extents,
                    int blobSize, std::vector<Points>& scans);
  void xCountPoints(const cv::Mat& depth, const vision::ComponentRuns& runs);
  void xKeepBeyond(const std::uint16_t* pixel, const std::uint16_t* end, bool logs);
  void xMakeRoom(int blobSize, std::vector<Points>& scans);

  vision::ComponentLabeler labeler;
  vision::ComponentRuns labelRuns;
  DepthProjection projection;
  std::optional<std::uint16_t> pixelBeyond;
  // The count of each run of a row.
  std::vector<int> runCounts;
  // By label; no room for a component that is too small.
  std::vector<Component> components;
  std::vector<DepthProjection::Room> rooms;
  // Those with room.
  std::vector<int> labels;
  SparePoints spares;
};

}  // namespace QV::sensor
