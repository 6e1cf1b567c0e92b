#include "platform/math/metrical_data.h"

namespace QV::Math {

std::vector<Position3D> pointsInFrame(const MetricalData& record) {
  std::vector<Position3D> result;
  result.reserve(record.points.size());
  for (const Position3D& point : record.points) result.push_back(record.sensorTransform * point);
  return result;
}

ko::Duration age(const MetricalData& record, ko::Clock::time_point now) {
  std::int64_t age = 0;
  const std::int64_t measured = record.timestamp.time_since_epoch().count();
  if (!__builtin_sub_overflow(now.time_since_epoch().count(), measured, &age))
    return ko::Duration(age);
  return measured < 0 ? ko::Duration::max() : ko::Duration::min();
}

}  // namespace QV::Math
