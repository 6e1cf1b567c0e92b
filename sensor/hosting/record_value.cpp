#include "sensor/hosting/record_value.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::sensor {
namespace {

using Points = std::vector<Math::Position3D>;

constexpr std::size_t kPointBytes = 3 * sizeof(float);
static_assert(sizeof(Math::Position3D) == kPointBytes &&
              std::is_trivially_copyable_v<Math::Position3D>);

QVValue toValue(const Points& points) {
  QVValue::Bytes bytes(points.size() * kPointBytes);
  if (!points.empty()) std::memcpy(bytes.data(), points.data(), bytes.size());
  return bytes;
}

QVValue toValue(const Math::SensorFieldOfView2D& fov) {
  return QVValue::array(fov.minRange, fov.maxRange, fov.angularRange, fov.rayCount);
}

Points toPoints(const QVValue& value) {
  const QVValue::Binary& bytes = value.toBinary();
  if (bytes->size() % kPointBytes != 0) {
    throw std::runtime_error("12 bytes a point expected, " + std::to_string(bytes->size()) +
                             " given");
  }
  Points points(bytes->size() / kPointBytes);
  if (!points.empty()) std::memcpy(points.data(), bytes->data(), bytes->size());
  return points;
}

Math::SensorFieldOfView2D toFieldOfView(const QVValue& value) {
  if (value.getSize() != 4) throw std::runtime_error("an array of 4 expected");
  return {value[0].toFloat(), value[1].toFloat(), value[2].toFloat(), value[3].toInt32()};
}

Math::Transform toTransform(const QVValue& value) {
  return Math::Transform(value.as<std::vector<float>>());
}

/** Runs `convert` on an element; its failure names the element. */
template <typename F>
auto element(const QVValue& record, std::size_t index, const char* what, F convert) {
  try {
    return convert(record[index]);
  } catch (const std::exception& exception) {
    throw QVError(NavigationContract::kModule, "recordFromQVValue",
                  "element " + std::to_string(index) + ", " + what + ": " + exception.what());
  }
}

template <typename T>
T as(const QVValue& value) {
  return value.as<T>();
}

}  // namespace

QVValue toQVValue(const Math::MetricalData& record) {
  return QVValue::array(record.sensorName, record.familyName, toValue(record.fieldOfView),
                        record.sensorTransform.toVector(), toValue(record.points),
                        record.timestamp);
}

QVValue toQVValue(const std::vector<Math::MetricalData>& records) {
  QVValue::Array values;
  values.reserve(records.size());
  for (const auto& record : records) values.push_back(toQVValue(record));
  return values;
}

Math::MetricalData recordFromQVValue(const QVValue& value) {
  if (!value.isArray() || value.getSize() != 6) {
    throw QVError(NavigationContract::kModule, "recordFromQVValue",
                  "a record of 6 elements expected, " + value.toText() + " given");
  }
  Math::MetricalData record;
  record.sensorName = element(value, 0, "the sensor's name", as<std::string>);
  record.familyName = element(value, 1, "the family's name", as<std::string>);
  record.fieldOfView = element(value, 2, "the field of view", toFieldOfView);
  record.sensorTransform = element(value, 3, "the transform", toTransform);
  record.points = element(value, 4, "the points", toPoints);
  record.timestamp = element(value, 5, "the timestamp", as<ko::Clock::time_point>);
  return record;
}

std::vector<Math::MetricalData> recordsFromQVValue(const QVValue& value) {
  const QVValue::Array& values = value.toArray();
  std::vector<Math::MetricalData> records;
  records.reserve(values.size());
  for (const QVValue& record : values) records.push_back(recordFromQVValue(record));
  return records;
}

}  // namespace QV::sensor
