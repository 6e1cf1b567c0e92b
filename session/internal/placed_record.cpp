#include "session/internal/placed_record.h"

namespace QV::session {
namespace {

constexpr float kFloor = 0.05f;

// A touch lies behind the sensor, a person off the axis.
bool isEcho(const std::vector<Math::Position3D>& points, Frame frame) {
  if (points.size() != 1) return false;
  return frame == Frame::map || (points[0].x > 0.0f && points[0].y == 0.0f && points[0].z == 0.0f);
}

Math::Position2D fromAbove(const Math::Position3D& position) {
  return {position.x, position.y};
}

void placeInMap(const Math::MetricalData& record, PlacedRecord& placed) {
  const float limit = record.fieldOfView.maxRange * (1.0f - 1e-5f);
  for (const auto& point : record.points) {
    const Math::Position2D position = fromAbove(point);
    auto& places = Math::norm(position) < limit ? placed.hits : placed.misses;
    places.push_back(placed.origin * position);
  }
}

void placeOnRobot(const Math::MetricalData& record, const Math::Pose2D& robot,
                  PlacedRecord& placed) {
  const float reach = record.fieldOfView.maxRange;
  const auto inFrame = Math::pointsInFrame(record);
  for (std::size_t i = 0; i < inFrame.size(); ++i) {
    if (record.familyName == "Asus" && inFrame[i].z < kFloor) continue;
    // A touch has no range.
    if (reach > 0.0f && Math::norm(record.points[i]) >= reach) continue;
    placed.hits.push_back(robot * fromAbove(inFrame[i]));
  }
}

}  // namespace

PlacedRecord place(const Math::MetricalData& record, const Math::Pose2D& robot, Frame frame) {
  PlacedRecord placed{record.familyName, record.fieldOfView, robot, {}, {}, {}};
  if (frame == Frame::robot) {
    placed.origin = robot * Math::pose2DFromTransform(record.sensorTransform);
  }
  if (isEcho(record.points, frame)) {
    placed.echo = record.points[0].x;
  } else if (frame == Frame::map) {
    placeInMap(record, placed);
  } else {
    placeOnRobot(record, robot, placed);
  }
  return placed;
}

}  // namespace QV::session
