#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/internal/range_fan.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * A laser of the robot: while the bit of its operation mode shows, it writes the points that its
 * rays meet, in its own frame, then the time of the scan. Its rays run from right to left, one for
 * each pair of keys; one that meets nothing is written kNoEchoMargin beyond the maximum. A hole
 * laser writes an error of 0 and a status: 1 hole, 4 step down, 2 sound floor. Safe from any
 * thread.
 */
class LaserUnit {
 public:
  /** Metres. */
  static constexpr float kNoEchoMargin = 1.0f;
  static constexpr int kHole = 1;
  static constexpr int kSoundFloor = 2;
  static constexpr int kStepDown = 4;

  /** Writes the keys of a laser that has not measured yet. */
  LaserUnit(const Model::SensorConfig& config, bool isHoleLaser, const UnitContext& context);

  const std::string& getActuator() const { return actuatorKey; }
  const std::string& getModeKey() const { return modeKey; }
  int getModeBits() const { return modeBits; }
  bool isOff(ko::Clock::time_point now) const;

  /** Scans if `mode` has its bit. */
  void scan(int mode, ko::Clock::time_point now);

 private:
  struct Scan {
    /** x and y of each point. */
    std::vector<float> coordinates;
    int error = 0;
    int status = 0;
  };

  Scan xMeasure();
  int xJudgeFloor(const std::vector<Ray>& rays, const std::vector<float>& ranges) const;
  void xWrite(const Scan& scan, ko::Clock::time_point time) const;
  Scan xMakeGarbage(const Scan& scan);
  static Scan xMakeWrong(const Scan& scan);

  const Model::SensorConfig config;
  const bool isHoleLaser;
  const std::string actuatorKey;
  const std::string modeKey;
  const int modeBits;
  const UnitContext context;
  const RangeFan fan;
  std::mutex mutex;
  RangeNoise noise;
  const FaultFinder faults;
  Garbage garbage;
  FaultChannel<Scan> channel;
};

}  // namespace QV::robot
