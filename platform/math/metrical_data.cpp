#include "platform/math/metrical_data.h"

namespace QV::Math {

std::vector<Position3D> pointsInFrame(const MetricalData& record) {
  std::vector<Position3D> result;
  result.reserve(record.points.size());
  for (const Position3D& point : record.points) result.push_back(record.sensorTransform * point);
  return result;
}

ko::Duration age(const MetricalData& record, ko::Clock::time_point now) {
  return now - record.timestamp;
}

}  // namespace QV::Math
