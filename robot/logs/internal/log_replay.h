#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/logs/internal/recording.h"

namespace QV::robot {

class MotionService;

/**
 * Plays a recording to a robot made from its description, in place of the drivers, which must not
 * run beside it; ranges go in as they were logged, also those beyond a maximum. Each step writes
 * the memory keys of the sensors (floats) and then those that their property "timestamp" names (an
 * int, the device manager's count 50 ms after the step's time, so that a laser dates its record to
 * the step), and tells the motion service how fast the robot moved since the step before. The first
 * step is due when this is made. For one thread at a time.
 */
class QV_API LogReplay {
 public:
  /** A step without a value for each key throws std::invalid_argument; no memory: QVError. */
  LogReplay(Recording recording, const boost::shared_ptr<QVBroker>& broker,
            const boost::shared_ptr<MotionService>& motion);
  ~LogReplay();

  /** Returns when the next step is due, on ko::Clock; nothing at the end. */
  std::optional<ko::Clock::time_point> getNextTime() const;

  /**
   * Makes the next step, with the time when it is due, whatever the time is; false at the end. What
   * memory refuses is its QVError, and the step is still to be made.
   */
  bool next();

  std::size_t getStepsMade() const { return stepsMade; }
  std::size_t getStepCount() const { return recording.steps.size(); }

  /** Returns where the robot was in the last step, in the recording's own frame. */
  Math::Pose2D getPose() const { return pose; }

 private:
  Math::Pose2D xVelocityTo(const RecordedStep& step) const;

  const Recording recording;
  const QVMemoryProxy memory;
  const boost::shared_ptr<MotionService> motion;
  const ko::Clock::time_point start;
  std::vector<std::string> valueKeys;
  std::vector<std::string> timeKeys;
  std::size_t stepsMade = 0;
  Math::Pose2D pose;
};

}  // namespace QV::robot
