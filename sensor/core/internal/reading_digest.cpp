#include "sensor/core/internal/reading_digest.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace QV::sensor {
namespace {

using Model::PointMeaning;

constexpr std::size_t kMostSamples = 96;
constexpr std::size_t kAheadOf = 12;
// A sensor may report a miss by a range beyond its maximum, up to a limit.
constexpr float kReason = 10.0f;
// The tolerance of a direction, as a slope.
constexpr float kTolerance = 0.03f;
// A camera's points count if they are about as high as the camera, and so no floor.
constexpr float kSlab = 0.3f;
constexpr float kAhead = 0.2f;

class Digester {
 public:
  Digester(const HealthNature& nature, std::size_t stride, const PlanarView::Shape& former,
           PlanarView& view)
      : nature(nature), stride(stride), former(former), view(view) {}

  void add(const Math::MetricalData& record) {
    if (mixes) xMix(record.points.size());
    if (nature.points && samples == 0) xBegin(record);
    // An arc is one range.
    const std::size_t step = isArc ? record.points.size() : stride;
    for (std::size_t i = 0; i < record.points.size(); i += step) {
      // A camera's points are out of the cache, and far apart.
      __builtin_prefetch(record.points.data() + i + kAheadOf * step);
      xSample(record, i);
    }
  }

  ReadingDigest finish() {
    digest.isBlank = samples == 0;
    digest.isGarbage = impossible > 0 && 4 * impossible >= samples;
    return digest;
  }

 private:
  void xBegin(const Math::MetricalData& record) {
    const float farthest = kReason * record.fieldOfView.maxRange;
    if (farthest > 0.0f) farthestSquare = farthest * farthest;
    // A sensor that looks at the floor takes it for no obstacle.
    looksAround = nature.showsMotion;
    if (!looksAround) return;
    isArc = *nature.points == PointMeaning::arc;
    view.begin(record, isArc, former);
    isFan = (isArc || *nature.points == PointMeaning::scan) && view.getSlope() > 0.0f;
  }

  void xSample(const Math::MetricalData& record, std::size_t i) {
    const Math::Position3D& point = record.points[i];
    if (mixes) {
      xMix(std::bit_cast<std::uint32_t>(point.x) ^
           std::rotl(std::uint64_t{std::bit_cast<std::uint32_t>(point.y)}, 24) ^
           std::rotl(std::uint64_t{std::bit_cast<std::uint32_t>(point.z)}, 41));
    }
    ++samples;
    if (!nature.points) return;
    if (xIsImpossible(point)) {
      ++impossible;
    } else if (looksAround && *nature.points == PointMeaning::sighting) {
      xAddSighting(record.sensorTransform, point);
    } else if (looksAround) {
      xAddObstacle(point.x, point.y);
    }
  }

  bool xIsImpossible(const Math::Position3D& point) const {
    const float square = point.x * point.x + point.y * point.y + point.z * point.z;
    if (!(square <= farthestSquare)) return true;
    return isFan && square > 0.0f &&
           std::abs(point.y) > view.getSlope() * point.x + kTolerance * std::abs(point.x);
  }

  void xAddSighting(const Math::Transform& t, const Math::Position3D& p) {
    // People are seen standing, and are reported from time to time only.
    if (!nature.hasRate) {
      digest.hasObstacle = true;
      return;
    }
    const float above = t(2, 0) * p.x + t(2, 1) * p.y + t(2, 2) * p.z;
    if (std::abs(above) > kSlab) return;
    const float groundX = t(0, 0) * p.x + t(0, 1) * p.y + t(0, 2) * p.z;
    const float groundY = t(1, 0) * p.x + t(1, 1) * p.y + t(1, 2) * p.z;
    const float axisX = view.getAxisX();
    const float axisY = view.getAxisY();
    xAddObstacle(axisX * groundX + axisY * groundY, axisX * groundY - axisY * groundX);
  }

  void xAddObstacle(float x, float y) {
    if (!view.add(x, y)) return;
    digest.hasObstacle = true;
    if (!isArc && std::abs(y) < kAhead * x) digest.hasObstacleAhead = true;
  }

  void xMix(std::uint64_t bits) {
    digest.fingerprint = (std::rotl(digest.fingerprint, 5) ^ bits) * 0x9e3779b97f4a7c15u;
  }

  const HealthNature nature;
  const std::size_t stride;
  const bool mixes = nature.asksForChanges();
  const PlanarView::Shape& former;
  PlanarView& view;
  ReadingDigest digest;
  std::size_t samples = 0;
  std::size_t impossible = 0;
  bool looksAround = false;
  bool isArc = false;
  bool isFan = false;
  float farthestSquare = std::numeric_limits<float>::max();
};

}  // namespace

ReadingDigest digestOf(const std::vector<Math::MetricalData>& records, const HealthNature& nature,
                       const PlanarView::Shape& former, PlanarView& view) {
  Digester digester(nature, countPoints(records) / kMostSamples + 1, former, view);
  if (nature.points || nature.asksForChanges()) {
    for (const auto& record : records) digester.add(record);
  }
  return digester.finish();
}

std::int64_t stampOf(const std::vector<Math::MetricalData>& records) {
  std::int64_t oldest = std::numeric_limits<std::int64_t>::max();
  for (const auto& record : records) {
    oldest = std::min<std::int64_t>(oldest, record.timestamp.time_since_epoch().count());
  }
  return oldest;
}

std::size_t countPoints(const std::vector<Math::MetricalData>& records) {
  std::size_t points = 0;
  for (const auto& record : records) points += record.points.size();
  return points;
}

}  // namespace QV::sensor
