#include "ros2/recording/internal/image_points.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "ros2/recording/internal/pixel_row.h"

namespace QV::ros2 {
namespace {

using Math::Position3D;
using Depth = cv::Mat_<std::uint16_t>;

/** Makes points of an image's pixels. */
class Projection {
 public:
  Projection(const Depth& depth, const ImageExtents& extents) : depth(depth), extents(extents) {
    const auto width = static_cast<float>(depth.cols);
    for (int column = 0; column < depth.cols; ++column)
      columns.push_back(static_cast<float>(column) / width - 0.5f);
  }

  const Depth& getDepth() const { return depth; }

  /** Pixels from `column` on. */
  PixelRow rowAt(int row, int column) const {
    const float up = 0.5f - static_cast<float>(row) / static_cast<float>(depth.rows);
    return {depth[row] + column, columns.data() + column, up, extents.width, extents.height};
  }

  /** Returns the pixel of a point; std::nullopt if it belongs to no pixel. */
  std::optional<cv::Point> find(const Position3D& point) const {
    const cv::Size2f size(static_cast<float>(depth.cols), static_cast<float>(depth.rows));
    const float column = (0.5f - point.y / (point.x * extents.width)) * size.width;
    const float row = (0.5f - point.z / (point.x * extents.height)) * size.height;
    const cv::Rect2f image({-0.5f, -0.5f}, size);
    if (!image.contains(cv::Point2f(column, row))) return std::nullopt;
    // Coordinates count from the image's edges, so that a cast rounds to the nearest pixel.
    const float right = column + 0.5f;
    const float down = row + 0.5f;
    return cv::Point(std::min(static_cast<int>(right), depth.cols - 1),
                     std::min(static_cast<int>(down), depth.rows - 1));
  }

 private:
  const Depth& depth;
  const ImageExtents extents;
  std::vector<float> columns;
};

/** Gathers runs; a pixel right behind the last run prolongs it. */
class RunWriter {
 public:
  explicit RunWriter(qv_msgs::ImagePoints& runs) : runs(runs) {}

  void add(std::int64_t place, int length) {
    if (place == end && !runs.lengths.empty()) {
      runs.lengths.back() += static_cast<std::uint32_t>(length);
    } else {
      runs.skips.push_back(static_cast<std::int32_t>(place - end));
      runs.lengths.push_back(static_cast<std::uint32_t>(length));
    }
    end = place + length;
  }

 private:
  qv_msgs::ImagePoints& runs;
  std::int64_t end = 0;
};

/** False for a list with a point that is no pixel's. */
bool encodeList(const Projection& projection, const std::vector<Position3D>& list,
                RunWriter& runs) {
  const std::int64_t width = projection.getDepth().cols;
  const Position3D* const end = list.data() + list.size();
  for (const Position3D* point = list.data(); point != end;) {
    const auto pixel = projection.find(*point);
    if (!pixel) return false;
    const std::int64_t most = std::min<std::int64_t>(end - point, width - pixel->x);
    const int count = projection.rowAt(pixel->y, pixel->x).match(point, static_cast<int>(most));
    if (count == 0) return false;
    runs.add(pixel->y * width + pixel->x, count);
    point += count;
  }
  return true;
}

[[noreturn]] void refuse(const std::string& what) {
  throw std::runtime_error(what + " expected in an image's points, others given");
}

/** Calls `visit` with the row, the first column and the one behind the last of each run's part in
 * a row. No pixel is in two runs of a camera, so that all together are no more than the image. */
template <typename Visit>
void visitRows(const qv_msgs::ImagePoints& points, const Depth& depth, const Visit& visit) {
  if (points.skips.size() != points.lengths.size()) refuse("as many skips as lengths");
  const std::int64_t width = depth.cols;
  const std::int64_t size = width * depth.rows;
  std::int64_t place = 0;
  std::int64_t left = size;
  std::int64_t row = 0;
  for (std::size_t i = 0; i < points.skips.size(); ++i) {
    place += points.skips[i];
    const std::int64_t end = place + points.lengths[i];
    left -= points.lengths[i];
    if (place < 0 || end > size || left < 0) refuse("pixels of the image, each once");
    if (place < row * width) row = place / width;
    while (place < end) {
      // Nearly always this row or the next: a division would take longer.
      while (place >= (row + 1) * width) ++row;
      const std::int64_t rowEnd = std::min(end, (row + 1) * width);
      visit(static_cast<int>(row), static_cast<int>(place - row * width),
            static_cast<int>(rowEnd - row * width));
      place = rowEnd;
    }
  }
}

}  // namespace

std::optional<qv_msgs::ImagePoints> encodePoints(const std::vector<Math::MetricalData>& records,
                                                 const Depth& depth, const ImageExtents& extents) {
  const Projection projection(depth, extents);
  qv_msgs::ImagePoints points;
  points.width_by_depth = extents.width;
  points.height_by_depth = extents.height;
  RunWriter runs(points);
  for (const Math::MetricalData& record : records) {
    if (!encodeList(projection, record.points, runs)) return std::nullopt;
  }
  return points;
}

std::vector<Position3D> decodePoints(const qv_msgs::ImagePoints& points, const Depth& depth) {
  const Projection projection(depth, {points.width_by_depth, points.height_by_depth});
  std::vector<Position3D> made;
  visitRows(points, depth, [&](int row, int begin, int end) {
    const PixelRow pixels = projection.rowAt(row, begin);
    for (int i = 0; i < end - begin; ++i) made.push_back(pixels.at(i));
  });
  return made;
}

std::vector<Position3D> thinPoints(const qv_msgs::ImagePoints& points, const Depth& depth, int n) {
  const Projection projection(depth, {points.width_by_depth, points.height_by_depth});
  std::vector<Position3D> made;
  visitRows(points, depth, [&](int row, int begin, int end) {
    if (row % n != 0) return;
    const PixelRow pixels = projection.rowAt(row, 0);
    for (int column = (begin + n - 1) / n * n; column < end; column += n)
      made.push_back(pixels.at(column));
  });
  return made;
}

}  // namespace QV::ros2
