#pragma once

#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"

namespace QV::session {

/** A path of straight lines, timed for a robot that turns on the spot at each corner. */
class QV_API TimedPath {
 public:
  /** `path` in metres, at least two positions; speeds in m/s and rad/s, above 0. */
  TimedPath(const std::vector<Math::Position2D>& path, double speed, double turnSpeed);

  /** The seconds from the first position to the last. */
  double getDuration() const { return legs.back().end; }

  /** The pose `seconds` after the start; beyond the end, the last one. */
  Math::Pose2D poseAt(double seconds) const;

  /** The remaining positions `seconds` after the start, first the present one. */
  std::vector<Math::Position2D> getRest(double seconds) const;

 private:
  /** A straight line or a turn on the spot. */
  struct Leg {
    Math::Pose2D from;
    Math::Pose2D to;
    double start;
    double end;
  };

  void xAdd(const Math::Pose2D& from, const Math::Pose2D& to, double seconds);

  std::vector<Leg> legs;
};

}  // namespace QV::session
