#include "session/internal/find_route.h"

#include <algorithm>
#include <cmath>
#include <queue>
#include <utility>

#include "session/internal/route_cells.h"

namespace QV::session {
namespace {

/** The search for the shortest way between cells, each to its eight neighbours. */
class RouteSearch {
 public:
  RouteSearch(const OccupancyMap& map, float radius, const std::atomic<bool>& isGivenUp)
      : map(map),
        isGivenUp(isGivenUp),
        radius(radius),
        cells(map, radius + map.getResolution(), radius) {}

  std::vector<Math::Position2D> find(const Math::Position2D& from, const Math::Position2D& to) {
    const cv::Point start = cells.cellOf(from);
    const cv::Point end = cells.cellOf(to);
    if (!isInside(start) || !isInside(end) || cells.at(end).room < radius) return {};
    if (!search(start, end)) return {};
    std::vector<Math::Position2D> route = straighten(cellsTo(end));
    if (route.empty()) return {};
    route.front() = from;
    route.back() = to;
    return route;
  }

 private:
  using Entry = std::pair<float, std::pair<int, int>>;

  bool isInside(const cv::Point& cell) const { return map.isInside(cell.x, cell.y); }

  // A route may leave a narrow place towards wider ones.
  bool canGo(const cv::Point& from, const cv::Point& to) {
    return isInside(to) && cells.at(to).room >= std::min(radius, cells.at(from).room);
  }

  bool search(const cv::Point& start, const cv::Point& end) {
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
    cells.at(start).cost = 0.0f;
    open.push({0.0f, {start.x, start.y}});
    while (!open.empty() && !isGivenUp) {
      const cv::Point cell(open.top().second.first, open.top().second.second);
      open.pop();
      if (cell == end) return true;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          const cv::Point next = cell + cv::Point(dx, dy);
          const float reached =
              cells.at(cell).cost + std::hypot(static_cast<float>(dx), static_cast<float>(dy));
          if (!canGo(cell, next) || reached >= cells.at(next).cost) continue;
          cells.at(next).cost = reached;
          cells.at(next).step = static_cast<uchar>(3 * (dy + 1) + dx + 1);
          open.push({reached + static_cast<float>(cv::norm(end - next)), {next.x, next.y}});
        }
      }
    }
    return false;
  }

  std::vector<cv::Point> cellsTo(const cv::Point& end) {
    std::vector<cv::Point> way{end};
    for (int step = 0; (step = cells.at(way.back()).step) != RouteCells::kNoStep;) {
      way.push_back(way.back() - cv::Point(step % 3 - 1, step / 3 - 1));
    }
    std::reverse(way.begin(), way.end());
    return way;
  }

  bool isStraight(const cv::Point& from, const cv::Point& to) {
    cv::Point last = from;
    const cv::Point way = to - from;
    const int steps = 2 * std::max(std::abs(way.x), std::abs(way.y));
    for (int i = 1; i <= steps; ++i) {
      const cv::Point cell = from + way * (static_cast<double>(i) / steps);
      if (!canGo(last, cell)) return false;
      last = cell;
      // A step is half a cell; where all cells have enough room, the next ones need no look.
      i += std::max(0, 2 * cells.countRoomyAhead(cell, way) - 2);
    }
    return true;
  }

  /** Returns the last cell up to which the path goes on in the direction that it has at `first`. */
  static std::size_t endOfRun(const std::vector<cv::Point>& way, std::size_t first) {
    std::size_t last = first + 1;
    while (last + 1 < way.size() && way[last + 1] - way[last] == way[first + 1] - way[first])
      ++last;
    return last;
  }

  std::vector<Math::Position2D> straighten(const std::vector<cv::Point>& way) {
    std::vector<Math::Position2D> route;
    for (std::size_t i = 0; i < way.size();) {
      route.push_back(map.getCellCentre(way[i].x, way[i].y));
      std::size_t next = endOfRun(way, i);
      // What follows is walked once for each of its cells.
      while (!isGivenUp && next + 1 < way.size() && isStraight(way[i], way[next + 1])) ++next;
      if (isGivenUp) return {};
      i = next;
    }
    if (route.size() == 1) route.push_back(route.front());
    return route;
  }

  const OccupancyMap& map;
  const std::atomic<bool>& isGivenUp;
  const float radius;
  RouteCells cells;
};

}  // namespace

std::vector<Math::Position2D> findRoute(const OccupancyMap& map, const Math::Position2D& from,
                                        const Math::Position2D& to, float radius) {
  return RouteSearch(map, radius, false).find(from, to);
}

std::vector<Math::Position2D> findRouteTo(const RouteQuestion& question,
                                          const std::atomic<bool>& isGivenUp) {
  return RouteSearch(*question.map, question.radius, isGivenUp).find(question.from, question.to);
}

}  // namespace QV::session
