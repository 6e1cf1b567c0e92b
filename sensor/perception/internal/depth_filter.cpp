#include "sensor/perception/internal/depth_filter.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "platform/ko/log.h"

namespace QV::sensor {
namespace {

constexpr char kFilteringCategory[] = "Navigation.Sensor3D";
// Millimetres between neighbours of one component.
constexpr int kMaxDifference = 100;
// The number of images whose point lists are kept; with fewer, different images find no list long
// enough.
constexpr std::size_t kSpareFrames = 3;

/** The pixels that have both a label and a depth. */
void findRuns(const cv::Mat& depth, const cv::Mat_<int>& labels, vision::ComponentRuns& runs) {
  runs.clear();
  for (int y = 0; y < labels.rows; ++y) {
    runs.beginRow(static_cast<std::size_t>(labels.cols));
    const int* const label = labels[y];
    const std::uint16_t* const pixels = depth.ptr<std::uint16_t>(y);
    for (int x = 0; x < labels.cols;) {
      const int begin = x;
      while (x < labels.cols && label[x] == label[begin] && pixels[x] != 0) ++x;
      if (x == begin) {
        ++x;
      } else if (label[begin] != 0) {
        runs.append(begin, x, label[begin]);
      }
    }
  }
}

int findMostLabel(const vision::ComponentRuns& runs) {
  int most = 0;
  for (std::size_t i = 0; i < runs.count; ++i) most = std::max(most, runs.labels[i]);
  return most;
}

}  // namespace

void DepthFilter::filter(const cv::Mat& depth, const Extents& extents, int blobSize,
                         std::vector<Points>& scans) {
  xProjectRuns(depth, labeler.findRuns(depth, kMaxDifference), extents, blobSize, scans);
}

void DepthFilter::project(const cv::Mat& depth, const cv::Mat_<int>& labels, const Extents& extents,
                          int blobSize, std::vector<Points>& scans) {
  findRuns(depth, labels, labelRuns);
  xProjectRuns(depth, labelRuns, extents, blobSize, scans);
}

void DepthFilter::xProjectRuns(const cv::Mat& depth, const vision::ComponentRuns& runs,
                               const Extents& extents, int blobSize, std::vector<Points>& scans) {
  projection.reset(depth.size(), extents);
  xCountPoints(depth, runs);
  std::erase_if(scans, [blobSize](const Points& points) {
    return static_cast<int>(points.size()) < blobSize;
  });
  xMakeRoom(blobSize, scans);
  spares.trim(kSpareFrames * depth.total());
  if (labels.empty()) return;
  for (int y = 0; y < depth.rows; ++y) {
    projection.project(depth.ptr<std::uint16_t>(y), y, runs.getRow(y), rooms.data());
  }
}

void DepthFilter::xCountPoints(const cv::Mat& depth, const vision::ComponentRuns& runs) {
  pixelBeyond.reset();
  components.assign(static_cast<std::size_t>(findMostLabel(runs)) + 1, {});
  runCounts.resize(static_cast<std::size_t>(depth.cols));
  const bool logs = ko::log::isEnabled(ko::log::Level::error, kFilteringCategory);
  int run = 0;
  for (int y = 0; y < depth.rows; ++y) {
    const std::uint16_t* const pixels = depth.ptr<std::uint16_t>(y);
    const vision::ComponentRuns::Row row = runs.getRow(y);
    projection.countPoints(pixels, row, runCounts.data());
    for (std::size_t i = 0; i < row.count; ++i, ++run) {
      const int count = runCounts[i];
      const int beyond = row.ends[i] - row.begins[i] - count;
      if (beyond > 0) xKeepBeyond(pixels + row.begins[i], pixels + row.ends[i], logs);
      Component& component = components[static_cast<std::size_t>(row.labels[i])];
      component.firstRun = component.points == 0 ? run : component.firstRun;
      component.points += count;
    }
  }
}

/** Keeps the last of these pixels that give no point; logs a line for each. */
void DepthFilter::xKeepBeyond(const std::uint16_t* pixel, const std::uint16_t* end, bool logs) {
  const auto isBeyond = [](std::uint16_t depth) { return depth > DepthProjection::kMaxDepth; };
  const auto last =
      std::find_if(std::reverse_iterator(end), std::reverse_iterator(pixel), isBeyond);
  pixelBeyond = *last;
  if (!logs) return;
  for (; pixel != end; ++pixel) {
    if (!isBeyond(*pixel)) continue;
    ko::log::error(kFilteringCategory, "xComputeXYZCoordinates")
        << "Sensor3D filtering value x : " << *pixel;
  }
}

void DepthFilter::xMakeRoom(int blobSize, std::vector<Points>& scans) {
  labels.clear();
  const int least = std::max(blobSize, 1);
  for (std::size_t label = 0; label < components.size(); ++label) {
    if (components[label].points >= least) labels.push_back(static_cast<int>(label));
  }
  const auto firstRunOf = [this](int label) {
    return components[static_cast<std::size_t>(label)].firstRun;
  };
  std::ranges::sort(labels, {}, firstRunOf);
  rooms.assign(components.size(), {});
  for (const int label : labels) {
    const auto index = static_cast<std::size_t>(label);
    Points& points =
        scans.emplace_back(spares.take(static_cast<std::size_t>(components[index].points)));
    rooms[index] = {points.data(), points.data() + points.size()};
  }
}

}  // namespace QV::sensor
