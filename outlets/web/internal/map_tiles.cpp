#include "outlets/web/internal/map_tiles.h"

#include <algorithm>
#include <cmath>
#include <regex>
#include <utility>

#include <opencv2/core.hpp>

#include "platform/vision/internal/png_image.h"

namespace QV::outlets {
namespace {

uchar greyOf(float occupancy) {
  if (std::abs(occupancy - OccupancyMap::kUnknown) < 0.01f) return 205;
  return occupancy > OccupancyMap::kSolidAbove ? 0 : 254;
}

// Returns a grey picture of the map's cells in this area.
cv::Mat_<uchar> greyOf(const OccupancyMap& map, const cv::Rect& area) {
  cv::Mat_<uchar> picture(area.size());
  for (int row = 0; row < area.height; ++row) {
    const auto width = static_cast<std::size_t>(map.getWidth());
    const auto start = static_cast<std::size_t>(area.y + row) * width;
    const float* cells = map.getCells().data() + start + area.x;
    std::transform(cells, cells + area.width, picture[row],
                   [](float occupancy) { return greyOf(occupancy); });
  }
  return picture;
}

// Half as large: the darkest of each four.
cv::Mat_<uchar> halved(const cv::Mat_<uchar>& picture) {
  cv::Mat_<uchar> half((picture.rows + 1) / 2, (picture.cols + 1) / 2);
  for (int row = 0; row < half.rows; ++row) {
    const uchar* below = picture[2 * row];
    const uchar* above = picture[std::min(2 * row + 1, picture.rows - 1)];
    for (int column = 0; column < half.cols; ++column) {
      const int left = 2 * column;
      const int right = std::min(left + 1, picture.cols - 1);
      half(row, column) = std::min({below[left], below[right], above[left], above[right]});
    }
  }
  return half;
}

// The picture is made by stripes, so that a large map is not held twice.
cv::Mat_<uchar> halved(const OccupancyMap& map) {
  constexpr int kStripe = 256;
  cv::Mat_<uchar> half((map.getHeight() + 1) / 2, (map.getWidth() + 1) / 2);
  for (int row = 0; row < map.getHeight(); row += kStripe) {
    const int height = std::min(kStripe, map.getHeight() - row);
    const cv::Mat_<uchar> part = halved(greyOf(map, {0, row, map.getWidth(), height}));
    part.copyTo(half.rowRange(row / 2, row / 2 + part.rows));
  }
  return half;
}

bool isOneTile(int width, int height) {
  return width <= MapTiles::kSide && height <= MapTiles::kSide;
}

std::string toPng(const cv::Mat_<uchar>& picture) {
  cv::Mat_<uchar> lastRowOnTop;
  cv::flip(picture, lastRowOnTop, 0);
  return QV::detail::encodePng(lastRowOnTop);
}

}  // namespace

MapTiles::MapTiles(boost::shared_ptr<const OccupancyMap> givenMap) : map(std::move(givenMap)) {
  if (!map || isOneTile(map->getWidth(), map->getHeight())) return;
  halves.push_back(halved(*map));
  while (!isOneTile(halves.back().cols, halves.back().rows)) {
    halves.push_back(halved(halves.back()));
  }
}

int MapTiles::getLevelCount() const {
  return map ? 1 + static_cast<int>(halves.size()) : 0;
}

std::optional<std::string> MapTiles::find(const std::string& path) const {
  static const std::regex form("/map/([0-9]{1,2})/([0-9]{1,5})/([0-9]{1,5})\\.png");
  std::smatch found;
  if (!std::regex_match(path, found, form)) return std::nullopt;
  return xFind(std::stoi(found[1]), std::stoi(found[2]), std::stoi(found[3]));
}

std::optional<std::string> MapTiles::xFind(int level, int column, int row) const {
  if (level >= getLevelCount()) return std::nullopt;
  const cv::Size size = level == 0 ? cv::Size(map->getWidth(), map->getHeight())
                                   : halves[static_cast<std::size_t>(level) - 1].size();
  const cv::Rect area =
      cv::Rect(kSide * column, kSide * row, kSide, kSide) & cv::Rect(cv::Point(), size);
  if (area.empty()) return std::nullopt;
  if (level == 0) return toPng(greyOf(*map, area));
  return toPng(halves[static_cast<std::size_t>(level) - 1](area));
}

}  // namespace QV::outlets
