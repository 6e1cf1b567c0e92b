#pragma once

#include <deque>
#include <vector>

#include "platform/ko/clock.h"
#include "platform/math/transform.h"

namespace QV::robot {

/** A robot's posture at one time. */
struct Posture {
  /** The positions of the joints that move by themselves, radians or metres. */
  std::vector<double> positions;
  /** The root link in the ground frame. */
  Math::Transform rootInGround;
};

/**
 * The postures of the last second at least, interpolated between samples. Before the first sample
 * the robot is taken to have stood as in it, from 1 s before the history was made. Not safe from
 * several threads.
 */
class PostureHistory {
 public:
  /** `assumed` holds until the first sample. */
  PostureHistory(ko::Clock::time_point start, const Posture& assumed);

  /** Adds a sample. It replaces samples that are not older. */
  void add(ko::Clock::time_point time, Posture posture);

  const Posture& getNewest() const { return samples.back().posture; }

  /** The newest sample holds up to `now`, and 100 ms ahead: clocks and stamps are not that exact. A
   * time not covered: std::out_of_range. */
  Posture at(ko::Clock::time_point time, ko::Clock::time_point now) const;

 private:
  struct Sample {
    ko::Clock::time_point time;
    Posture posture;
  };

  void xForgetBefore(ko::Clock::time_point time);
  static Posture xBetween(const Sample& before, const Sample& after, ko::Clock::time_point time);

  ko::Clock::time_point coveredFrom;
  bool isAssumed = true;
  // Never empty, in order of time.
  std::deque<Sample> samples;
};

}  // namespace QV::robot
