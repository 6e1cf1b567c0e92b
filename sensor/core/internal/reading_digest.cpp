#include "sensor/core/internal/reading_digest.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace QV::sensor {
namespace {

using Model::PointMeaning;

constexpr std::size_t kMostSamples = 256;
// A sensor may say "nothing there" by a range beyond its maximum, within reason.
constexpr float kReason = 10.0f;
constexpr float kAngleTolerance = 0.02f;
// Of a camera's points those count that are about as high as the camera, and so no floor.
constexpr float kSlab = 0.3f;
constexpr float kAhead = 0.2f;

class Digester {
 public:
  Digester(const HealthNature& nature, std::size_t stride) : nature(nature), stride(stride) {}

  void add(const Math::MetricalData& record) {
    digest.stamp = std::min(digest.stamp, record.timestamp.time_since_epoch().count());
    xMix(static_cast<std::uint32_t>(record.points.size()));
    if (nature.points && samples == 0) xBegin(record);
    for (std::size_t i = 0; i < record.points.size(); i += stride) xSample(record, i);
  }

  ReadingDigest finish() {
    digest.isGarbage = impossible > 0 && 4 * impossible >= samples;
    return digest;
  }

 private:
  void xBegin(const Math::MetricalData& record) {
    const float half = 0.5f * record.fieldOfView.angularRange + kAngleTolerance;
    isFan = nature.showsMotion &&
            (*nature.points == PointMeaning::scan || *nature.points == PointMeaning::arc) &&
            half < 1.5f;
    slope = isFan ? std::tan(half) : 0.0f;
    farthest = kReason * record.fieldOfView.maxRange;
    digest.view.begin(record, *nature.points == PointMeaning::arc);
  }

  void xSample(const Math::MetricalData& record, std::size_t i) {
    const Math::Position3D& point = record.points[i];
    xMix(std::bit_cast<std::uint32_t>(point.x));
    xMix(std::bit_cast<std::uint32_t>(point.y));
    xMix(std::bit_cast<std::uint32_t>(point.z));
    ++samples;
    if (!nature.points) return;
    if (xIsImpossible(point)) {
      ++impossible;
    } else if (*nature.points == PointMeaning::sighting) {
      xAddSighting(record.sensorTransform, point);
    } else if (*nature.points != PointMeaning::touch) {
      xAddObstacle(point.x, point.y);
    }
  }

  bool xIsImpossible(const Math::Position3D& point) const {
    const float square = point.x * point.x + point.y * point.y + point.z * point.z;
    if (!std::isfinite(square)) return true;
    if (farthest > 0.0f && square > farthest * farthest) return true;
    return isFan && square > 0.0f && std::abs(point.y) > slope * point.x;
  }

  void xAddSighting(const Math::Transform& t, const Math::Position3D& p) {
    // People stand up to what sees them, and are told of from time to time.
    if (!nature.hasRate) {
      digest.hasObstacle = true;
      return;
    }
    const float above = t(2, 0) * p.x + t(2, 1) * p.y + t(2, 2) * p.z;
    if (std::abs(above) > kSlab) return;
    const float length = std::hypot(t(0, 0), t(1, 0));
    if (length == 0.0f) return;
    const float groundX = t(0, 0) * p.x + t(0, 1) * p.y + t(0, 2) * p.z;
    const float groundY = t(1, 0) * p.x + t(1, 1) * p.y + t(1, 2) * p.z;
    xAddObstacle((t(0, 0) * groundX + t(1, 0) * groundY) / length,
                 (t(0, 0) * groundY - t(1, 0) * groundX) / length);
  }

  void xAddObstacle(float x, float y) {
    if (!digest.view.add(x, y)) return;
    digest.hasObstacle = true;
    if (*nature.points != PointMeaning::arc && std::abs(y) < kAhead * x) {
      digest.hasObstacleAhead = true;
    }
  }

  void xMix(std::uint32_t bits) {
    digest.fingerprint = (std::rotl(digest.fingerprint, 5) ^ bits) * 0x9e3779b97f4a7c15u;
  }

  const HealthNature& nature;
  const std::size_t stride;
  ReadingDigest digest{.stamp = std::numeric_limits<std::int64_t>::max()};
  std::size_t samples = 0;
  std::size_t impossible = 0;
  bool isFan = false;
  float slope = 0.0f;
  float farthest = 0.0f;
};

}  // namespace

ReadingDigest digestOf(const std::vector<Math::MetricalData>& records, const HealthNature& nature) {
  std::size_t points = 0;
  for (const auto& record : records) points += record.points.size();
  Digester digester(nature, points / kMostSamples + 1);
  for (const auto& record : records) digester.add(record);
  return digester.finish();
}

}  // namespace QV::sensor
