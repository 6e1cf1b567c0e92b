#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "ros2/bag/bag_reader.h"
#include "session/internal/session_robot.h"

namespace QV::ros2 {

/** A robot that a recording is played to. Driving or moving it throws UsageError. */
class BagRobot : public session::SessionRobot {
 public:
  void setPose(const Math::Pose2D& newPose) override;
  void drive(const Math::Pose2D& velocity) override;
  void follow(const session::TimedPath& path, double seconds) override;

  bool isRecording() const override { return true; }
  double getShareDone() const override;
  std::optional<ko::Duration> getLength() const override;

  virtual const BagReader& getBag() const = 0;
  /** The records that were recorded at this moment; null if none were. */
  virtual const std::vector<Math::MetricalData>* getRecorded() const { return nullptr; }
  /** Returns how many moments were passed over so far, as not all of their records could be read.
   */
  virtual std::uint64_t countLeftOut() const { return 0; }
  /** True if the last step had data of a sensor. */
  virtual bool isNew(const std::string&) const { return true; }
};

/** Makes the world that a robot without a map knows: nothing, 30 m around its start. */
QV_API boost::shared_ptr<OccupancyMap> makeUnknownMap();

}  // namespace QV::ros2
