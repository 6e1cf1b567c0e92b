#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "ros2/recording/internal/bag_robot.h"
#include "ros2/recording/internal/session_reader.h"

namespace QV::ros2 {

/**
 * A robot of a recording of this library: the recorded inputs and commands go into its modules and
 * its manager again, at their recorded times.
 */
class PlayedRobot : public BagRobot {
 public:
  explicit PlayedRobot(std::unique_ptr<SessionReader> reader);

  std::string getSort() const override { return reader->getFacts().sort; }
  std::string getTitle() const override { return reader->getFacts().title; }
  session::Frame getFrame() const override { return reader->getFacts().frame; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return reader->getMap(); }
  Math::Pose2D getPose() const override { return pose; }
  float getRadius() const override { return reader->getFacts().radius; }
  session::DriverPeriods getDriverPeriods() const override { return reader->getFacts().periods; }

  std::optional<ko::Clock::time_point> getNextStep() const override;
  void makeStep() override;
  void setListener(session::SessionListener* newListener) override { listener = newListener; }
  bool isAmidSteps() const override { return !isAtLook; }

  const BagReader& getBag() const override { return reader->getBag(); }
  ko::Clock::time_point getStart() const override;
  const std::vector<Math::MetricalData>* getRecorded() const override;
  std::uint64_t countLeftOut() const override { return reader->countLeftOut(); }

 protected:
  SessionReader& getReader() const { return *reader; }
  session::SessionListener* getListener() const { return listener; }
  /** True if a record of this sensor has been recorded so far. */
  bool hasSeen(const std::string& sensor) const { return seen.count(sensor) > 0; }
  virtual void xMoveTo(const Math::Pose2D& newPose) { pose = newPose; }

 private:
  void xExecute(const qv_msgs::Command& command);

  const std::unique_ptr<SessionReader> reader;
  Math::Pose2D pose;
  std::vector<Math::MetricalData> recorded;
  std::set<std::string> seen;
  std::set<std::string> subscribers;
  bool isAtLook = false;
  session::SessionListener* listener = nullptr;
};

/** Starts at facts.start, in simulated time. Throws std::runtime_error for a bad recording. */
std::unique_ptr<PlayedRobot> makePlayedRobot(std::unique_ptr<SessionReader> reader,
                                             const sensor::SensorFactory& sensors);

}  // namespace QV::ros2
