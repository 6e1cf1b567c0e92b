#include "session/internal/place_marks.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace QV::session {
namespace {

// A camera's point below this height (m) is the floor.
constexpr float kFloor = 0.05f;

/** Sorts the points of one record. */
class MarkPlacement {
 public:
  MarkPlacement(const Math::MetricalData& record, Model::PointMeaning meaning,
                const Math::Pose2D& robot, Frame frame)
      : record(record), meaning(meaning), robot(robot), frame(frame) {
    // Misses end at the maximum range, up to rounding.
    const float reach = record.fieldOfView.maxRange;
    if (meaning != Model::PointMeaning::touch && reach > 0.0f) limit = reach * (1.0f - 1e-5f);
  }

  Marks place() {
    const auto inFrame = frame == Frame::map ? record.points : Math::pointsInFrame(record);
    for (std::size_t i = 0; i < inFrame.size(); ++i) {
      const auto& point = inFrame[i];
      const Math::Position2D fromAbove = robot * Math::Position2D(point.x, point.y);
      xSort(record.points[i], {fromAbove, point.z});
    }
    if (meaning == Model::PointMeaning::arc) xPlaceEcho();
    return std::move(marks);
  }

 private:
  // Simulated points are in a plane, and at a height that is not theirs.
  float rangeOf(const Math::Position3D& point) const {
    return frame == Frame::map ? std::hypot(point.x, point.y) : Math::norm(point);
  }

  bool isFloor(const Math::Position3D& point, float height) const {
    if (meaning == Model::PointMeaning::floor) return point.x > record.fieldOfView.minRange;
    const bool sees = meaning == Model::PointMeaning::sighting;
    return sees && frame == Frame::robot && height < kFloor;
  }

  void xSort(const Math::Position3D& point, const Math::Position3D& position) {
    if (!std::isfinite(position.x) || !std::isfinite(position.y)) return;
    const float range = rangeOf(point);
    if (!(range < limit)) {
      if (meaning == Model::PointMeaning::scan) marks.misses.push_back(position);
      return;
    }
    if (isFloor(point, position.z)) return marks.floor.push_back(position);
    if (meaning != Model::PointMeaning::touch && range < marks.nearest.value_or(INFINITY)) {
      marks.nearest = range;
      nearestHeight = position.z;
    }
    if (meaning != Model::PointMeaning::arc) marks.hits.push_back(position);
  }

  void xPlaceEcho() {
    if (!marks.nearest) return;
    marks.echoes.push_back({findOrigin(record, robot, frame), nearestHeight, *marks.nearest,
                            record.fieldOfView.angularRange});
  }

  const Math::MetricalData& record;
  const Model::PointMeaning meaning;
  const Math::Pose2D robot;
  const Frame frame;
  float limit = INFINITY;
  float nearestHeight = 0.0f;
  Marks marks;
};

void append(std::vector<Math::Position3D>& positions, const std::vector<Math::Position3D>& others) {
  positions.insert(positions.end(), others.begin(), others.end());
}

}  // namespace

Math::Pose2D findOrigin(const Math::MetricalData& record, const Math::Pose2D& robot, Frame frame) {
  if (frame == Frame::map) return robot;
  return robot * Math::pose2DFromTransform(record.sensorTransform);
}

Marks placeMarks(const Math::MetricalData& record, Model::PointMeaning meaning,
                 const Math::Pose2D& robot, Frame frame) {
  return MarkPlacement(record, meaning, robot, frame).place();
}

void addMarks(Marks& marks, const Marks& others) {
  append(marks.hits, others.hits);
  append(marks.misses, others.misses);
  append(marks.floor, others.floor);
  marks.echoes.insert(marks.echoes.end(), others.echoes.begin(), others.echoes.end());
  if (!others.nearest) return;
  marks.nearest = std::min(*others.nearest, marks.nearest.value_or(*others.nearest));
}

}  // namespace QV::session
