#include "sensor/core/internal/planar_view.h"

#include <cmath>
#include <limits>
#include <map>
#include <random>

#include <gmock/gmock.h>

namespace QV::sensor {
namespace {

constexpr double kUnseen = std::numeric_limits<double>::infinity();
constexpr int kDirections = 12;
constexpr double kCertain = 0.85;
constexpr double kPossible = 1.15;

struct Place {
  double x;
  double y;
};

/** An eye with all that is before it, in angles where the view has slopes. */
struct Eye {
  Place place{};
  double heading = 0.0;
  double half = 0.0;
  double minRange = 0.0;
  double maxRange = 0.0;
  double tilt = 0.0;
  bool isArc = false;
  std::vector<Place> points = {};
  /** Of each direction the nearest point. */
  std::map<int, Place> seen = {};

  bool add(Place point) {
    const double range = std::hypot(point.x, point.y);
    const bool isWide = kPossible * half >= 1.3;
    if (range <= minRange || range >= maxRange || (!isWide && half > 0.0 && point.x <= 0.0))
      return false;
    const double angle = std::atan2(point.y, point.x);
    const double share = isWide ? angle / half : std::tan(angle) / std::tan(half);
    const double direction = std::clamp((share + 1.0) / 2.0 * kDirections, 0.0, kDirections - 1.0);
    const bool isOne = isArc || half == 0.0;
    const auto [found, isNew] = seen.try_emplace(isOne ? 0 : static_cast<int>(direction), point);
    if (!isNew && range < std::hypot(found->second.x, found->second.y)) found->second = point;
    return true;
  }

  PlanarView look() {
    Math::MetricalData record;
    record.fieldOfView = {static_cast<float>(minRange), static_cast<float>(maxRange),
                          static_cast<float>(2.0 * half), 2};
    record.sensorTransform =
        Math::rotationFrom3DRotation(0.0f, static_cast<float>(tilt), static_cast<float>(heading));
    record.sensorTransform(0, 3) = static_cast<float>(place.x);
    record.sensorTransform(1, 3) = static_cast<float>(place.y);
    PlanarView view;
    view.begin(record, isArc, {});
    for (const Place& point : points) {
      EXPECT_EQ(view.add(static_cast<float>(point.x), static_cast<float>(point.y)), add(point));
    }
    EXPECT_EQ(view.isEmpty(), seen.empty());
    return view;
  }

  Place toGround(Place p) const {
    return {place.x + p.x * std::cos(heading) - p.y * std::sin(heading),
            place.y + p.x * std::sin(heading) + p.y * std::cos(heading)};
  }
  double rangeTo(Place p) const { return std::hypot(p.x - place.x, p.y - place.y); }
  bool looksAt(Place p, double share) const {
    const double angle =
        std::remainder(std::atan2(p.y - place.y, p.x - place.x) - heading, 2 * M_PI);
    return rangeTo(p) <= maxRange && std::abs(angle) < share * half;
  }

  double findNearest(const Eye& other, const Eye& from, double share) const {
    double nearest = kUnseen;
    for (const auto& [direction, point] : seen) {
      const Place there = toGround(point);
      if (isArc) return std::hypot(point.x, point.y);
      if (other.looksAt(there, share)) nearest = std::min(nearest, from.rangeTo(there));
    }
    return nearest;
  }

  bool coversEchoOf(const Eye& arc) const {
    const double range = arc.findNearest(*this, arc, 1.0);
    const double x = range * std::cos(arc.half);
    const double y = range * std::sin(arc.half);
    return looksAt(arc.toGround({x, y}), 1.0) && looksAt(arc.toGround({x, -y}), 1.0);
  }
};

/** What the two of them say, seen from the first, which is the arc if there is one. */
std::optional<std::pair<double, double>> compare(const Eye& from, const Eye& other) {
  const double apart = std::abs(std::remainder(from.heading - other.heading, 2 * M_PI));
  const double together = from.half + other.half;
  if ((from.isArc && other.isArc) || (together < 2.6 && apart >= together)) return std::nullopt;
  const double own = from.findNearest(other, from, kCertain);
  const double ownAtMost = from.findNearest(other, from, kPossible);
  const double others = other.findNearest(from, from, kCertain);
  const double othersAtMost = other.findNearest(from, from, kPossible);
  if (own == kUnseen || others == kUnseen) return std::nullopt;
  if (others < ownAtMost) return std::pair(ownAtMost, others);
  const bool isCertain = !from.isArc || other.coversEchoOf(from);
  return own < othersAtMost && isCertain ? std::pair(own, othersAtMost) : std::pair(own, own);
}

TEST(PlanarView, comparesAsAnglesAndRangesSay) {
  std::mt19937 chance(5);
  const auto draw = [&](double least, double most) {
    return std::uniform_real_distribution(least, most)(chance);
  };
  const auto drawEye = [&] {
    Eye eye{
        {draw(-0.5, 0.5), draw(-0.5, 0.5)}, draw(-3.0, 3.0), 0.0, draw(0.1, 0.6), draw(1.0, 4.0)};
    const int kind = static_cast<int>(draw(0.0, 12.0));
    eye.half = kind == 0 ? 0.0 : kind < 9 ? draw(0.1, 1.1) : draw(1.2, 2.3);
    eye.isArc = kind % 3 == 1;
    eye.tilt = kind % 2 == 0 ? 0.0 : draw(0.1, 1.45);
    for (int i = 0; i < 8; ++i) {
      const double angle = draw(-1.4, 1.4) * eye.half;
      const double range = draw(0.5 * eye.minRange, 1.1 * eye.maxRange);
      eye.points.push_back({range * std::cos(angle), range * std::sin(angle)});
    }
    // Out of its range, both of them.
    eye.points.insert(eye.points.end(), {{eye.minRange, 0.0}, {eye.maxRange, 0.0}});
    return eye;
  };
  int compared = 0;
  for (int round = 0; round < 6000; ++round) {
    SCOPED_TRACE(round);
    Eye a = drawEye();
    Eye b = drawEye();
    const auto seen = PlanarView::compare(a.look(), b.look());
    const auto expected = b.isArc ? compare(b, a) : compare(a, b);
    ASSERT_EQ(seen.has_value(), expected.has_value());
    if (!seen) continue;
    ++compared;
    ASSERT_NEAR(seen->own, b.isArc ? expected->second : expected->first, 1e-4);
    ASSERT_NEAR(seen->others, b.isArc ? expected->first : expected->second, 1e-4);
  }
  EXPECT_GT(compared, 1000);
}

}  // namespace
}  // namespace QV::sensor
