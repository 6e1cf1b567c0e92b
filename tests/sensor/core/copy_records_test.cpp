#include "sensor/core/internal/copy_records.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace QV::sensor {
namespace {

Math::MetricalData recordOf(int points) {
  const auto number = static_cast<float>(points);
  Math::MetricalData record;
  record.sensorName = "Laser/" + std::to_string(points);
  record.familyName = "Laser";
  record.fieldOfView = Math::SensorFieldOfView2D(0.1f, number + 1.0f, 2.0f, points);
  record.sensorTransform = Math::Transform::fromPosition({number, 2.0f, 3.0f});
  record.timestamp = ko::Clock::time_point(ko::Duration(points + 1));
  for (int i = 0; i < points; ++i) {
    const auto x = static_cast<float>(3 * i);
    record.points.emplace_back(x + 1.0f, x + 2.0f, x + 3.0f);
  }
  return record;
}

// Of so many points that vectors of any width have some left over.
TEST(CopyRecords, areTheSame) {
  std::vector<Math::MetricalData> records;
  for (int points = 0; points < 40; ++points) records.push_back(recordOf(points));
  EXPECT_EQ(copyRecords(records), records);
}

}  // namespace
}  // namespace QV::sensor
