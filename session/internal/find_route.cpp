#include "session/internal/find_route.h"

#include <algorithm>
#include <cmath>
#include <queue>
#include <utility>

namespace QV::session {
namespace {

/** More than a map has in a row. */
constexpr float kMostCells = 1e9f;

/** The search for the shortest way between cells, each to its eight neighbours. */
class RouteSearch {
 public:
  RouteSearch(const OccupancyMap& map, float radius)
      : map(map),
        toMap(Math::pinv(map.getOrigin())),
        radius(radius),
        roomMap(map, radius + map.getResolution()),
        room(roomMap.getCells()),
        cost(room.size(), INFINITY),
        before(room.size(), cv::Point(-1, -1)) {}

  std::vector<Math::Position2D> find(const Math::Position2D& from, const Math::Position2D& to) {
    const cv::Point start = cellOf(from);
    const cv::Point end = cellOf(to);
    if (!isInside(start) || !isInside(end) || room(end) < radius) return {};
    if (!search(start, end)) return {};
    std::vector<Math::Position2D> route = straighten(cellsTo(end));
    route.front() = from;
    route.back() = to;
    return route;
  }

 private:
  using Entry = std::pair<float, std::pair<int, int>>;

  cv::Point cellOf(const Math::Position2D& position) const {
    const Math::Position2D inMap = toMap * position;
    const auto numberOf = [this](float along) {
      const float number = along / map.getResolution();
      // What is far out has no cell of any number.
      return number >= 0.0f && number < kMostCells ? static_cast<int>(number) : -1;
    };
    return {numberOf(inMap.x), numberOf(inMap.y)};
  }

  bool isInside(const cv::Point& cell) const { return map.isInside(cell.x, cell.y); }

  // A route may leave a narrow place towards wider ones.
  bool canGo(const cv::Point& from, const cv::Point& to) const {
    return isInside(to) && room(to) >= std::min(radius, room(from));
  }

  bool search(const cv::Point& start, const cv::Point& end) {
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
    cost(start) = 0.0f;
    open.push({0.0f, {start.x, start.y}});
    while (!open.empty()) {
      const cv::Point cell(open.top().second.first, open.top().second.second);
      open.pop();
      if (cell == end) return true;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          const cv::Point next = cell + cv::Point(dx, dy);
          const float reached =
              cost(cell) + std::hypot(static_cast<float>(dx), static_cast<float>(dy));
          if (!canGo(cell, next) || reached >= cost(next)) continue;
          cost(next) = reached;
          before(next) = cell;
          open.push({reached + static_cast<float>(cv::norm(end - next)), {next.x, next.y}});
        }
      }
    }
    return false;
  }

  std::vector<cv::Point> cellsTo(const cv::Point& end) const {
    std::vector<cv::Point> cells;
    for (cv::Point cell = end; cell.x >= 0; cell = before(cell)) cells.push_back(cell);
    std::reverse(cells.begin(), cells.end());
    return cells;
  }

  bool isStraight(const cv::Point& from, const cv::Point& to) const {
    cv::Point last = from;
    const int steps = 2 * std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
    for (int i = 1; i <= steps; ++i) {
      const cv::Point cell = from + (to - from) * (static_cast<double>(i) / steps);
      if (!canGo(last, cell)) return false;
      last = cell;
    }
    return true;
  }

  std::vector<Math::Position2D> straighten(const std::vector<cv::Point>& cells) const {
    std::vector<Math::Position2D> route;
    for (std::size_t i = 0; i < cells.size();) {
      route.push_back(map.getCellCentre(cells[i].x, cells[i].y));
      std::size_t next = i + 1;
      while (next + 1 < cells.size() && isStraight(cells[i], cells[next + 1])) ++next;
      i = next;
    }
    if (route.size() == 1) route.push_back(route.front());
    return route;
  }

  const OccupancyMap& map;
  const Math::Pose2D toMap;
  const float radius;
  const RoomMap roomMap;
  const cv::Mat_<float>& room;
  cv::Mat_<float> cost;
  cv::Mat_<cv::Point> before;
};

}  // namespace

std::vector<Math::Position2D> findRoute(const OccupancyMap& map, const Math::Position2D& from,
                                        const Math::Position2D& to, float radius) {
  return RouteSearch(map, radius).find(from, to);
}

}  // namespace QV::session
