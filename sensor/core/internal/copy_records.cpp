#include "sensor/core/internal/copy_records.h"

#include <cstddef>
#include <iterator>

namespace QV::sensor {
namespace {

/**
 * Hands out points as three numbers each. The compiler copies those by vectors, but whole points
 * one by one, because their default constructor is not trivial.
 */
class ByNumbers {
 public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = Math::Position3D;
  using difference_type = std::ptrdiff_t;
  using pointer = const Math::Position3D*;
  using reference = Math::Position3D;

  explicit ByNumbers(pointer at) : at(at) {}
  reference operator*() const { return {at->x, at->y, at->z}; }
  ByNumbers& operator++() {
    ++at;
    return *this;
  }
  friend bool operator==(const ByNumbers&, const ByNumbers&) = default;
  friend difference_type operator-(const ByNumbers& one, const ByNumbers& other) {
    return one.at - other.at;
  }

 private:
  pointer at;
};

std::vector<Math::Position3D> copyPoints(const std::vector<Math::Position3D>& points) {
  return std::vector<Math::Position3D>(ByNumbers(points.data()),
                                       ByNumbers(points.data() + points.size()));
}

}  // namespace

std::vector<Math::MetricalData> copyRecords(const std::vector<Math::MetricalData>& records) {
  std::vector<Math::MetricalData> copies;
  copies.reserve(records.size());
  for (const Math::MetricalData& record : records) {
    copies.emplace_back(record.sensorName, record.familyName, record.fieldOfView,
                        record.sensorTransform, copyPoints(record.points), record.timestamp);
  }
  return copies;
}

}  // namespace QV::sensor
