#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/ko/clock.h"
#include "session/session.h"

namespace QV::ros2 {

/** A record, and for how long it was there. */
struct Seen {
  Math::MetricalData record;
  ko::Clock::time_point first;
  ko::Clock::time_point last;
};
using Records = std::vector<Seen>;
using RecordsBySensor = std::map<std::string, Records>;

/** The difference of two records, per part. */
struct Distance {
  float points = 0.0f;
  float view = 0.0f;
  float mounting = 0.0f;
  /** The error of points below the minimum range (m). */
  float tooNear = 0.0f;

  void raise(const Distance& other) {
    points = std::max(points, other.points);
    view = std::max(view, other.view);
    mounting = std::max(mounting, other.mounting);
    tooNear = std::max(tooNear, other.tooNear);
  }
  /** Errors in parts that messages can hold weigh more. */
  friend bool operator<(const Distance& a, const Distance& b) {
    const auto held = [](const Distance& of) { return of.points + of.view + of.mounting; };
    return std::pair(held(a), a.tooNear) < std::pair(held(b), b.tooNear);
  }
};

inline const Distance kFar{std::numeric_limits<float>::infinity()};

inline float most(float a, float b) {
  return std::max(a, std::abs(b));
}

/** `told` is the robot's own. */
inline Distance between(const Math::MetricalData& told, const Math::MetricalData& read) {
  if (told.familyName != read.familyName || told.points.size() != read.points.size()) return kFar;
  const auto& [minTold, maxTold, angleTold, raysTold] = told.fieldOfView;
  const auto& [minRead, maxRead, angleRead, raysRead] = read.fieldOfView;
  if (raysTold != raysRead) return kFar;
  Distance distance;
  distance.view =
      most(most(most(0.0f, minTold - minRead), maxTold - maxRead), angleTold - angleRead);
  for (std::size_t i = 0; i < told.points.size(); ++i) {
    const auto &p = told.points[i], &q = read.points[i];
    // A range that is too near reads as the minimum range.
    const bool isTooNear =
        std::hypot(p.x, p.y) < minTold && std::abs(std::hypot(q.x, q.y) - minTold) < 1e-6f;
    float& farthest = isTooNear ? distance.tooNear : distance.points;
    farthest = most(most(most(farthest, p.x - q.x), p.y - q.y), p.z - q.z);
  }
  for (std::size_t i = 0; i < told.sensorTransform.values.size(); ++i)
    distance.mounting =
        most(distance.mounting, told.sensorTransform.values[i] - read.sensorTransform.values[i]);
  return distance;
}

/** Adds the records of now; one that is there already lasts until now. */
inline void add(RecordsBySensor& all, std::vector<Math::MetricalData> records) {
  const auto now = ko::Clock::now();
  for (auto& record : records) {
    auto& ofSensor = all[record.sensorName];
    if (ofSensor.empty() || !(ofSensor.back().record == record))
      ofSensor.push_back({std::move(record), now, now});
    ofSensor.back().last = now;
  }
}

/** Returns the difference to the most similar record, whose time is at most `about` another. */
inline Distance toNearest(const Seen& read, const Records& told, ko::Duration about) {
  Distance least = kFar;
  for (const Seen& other : told) {
    if (read.first - other.last > about || other.first - read.last > about) continue;
    const Distance distance = between(other.record, read.record);
    if (distance < least) least = distance;
  }
  return least;
}

inline bool hasPoints(const RecordsBySensor& records, const std::string& sensor) {
  const auto found = records.find(sensor);
  return found != records.end() && std::ranges::any_of(found->second, [](const auto& seen) {
           return !seen.record.points.empty();
         });
}

/** Expects that what was read is among what the robot has told, and prints how far it is off. */
inline void expectSameRecords(const RecordsBySensor& told, const RecordsBySensor& read,
                              ko::Duration about = ko::Duration(2'000'000'000)) {
  for (const auto& [sensor, records] : read) {
    Distance farthest;
    for (const Seen& seen : records) farthest.raise(toNearest(seen, told.at(sensor), about));
    std::printf(
        "%-18s %3zu records, at most off: points %.3g m, too near ones %.3g m, view %.3g, "
        "mounting %.3g\n",
        sensor.c_str(), records.size(), double{farthest.points}, double{farthest.tooNear},
        double{farthest.view}, double{farthest.mounting});
    EXPECT_LE(farthest.tooNear, records[0].record.fieldOfView.minRange) << sensor;
    EXPECT_LT(farthest.points, 1e-6f) << sensor;
    EXPECT_LT(farthest.view, 1e-6f) << sensor;
    EXPECT_LT(farthest.mounting, 1e-6f) << sensor;
  }
}

}  // namespace QV::ros2
