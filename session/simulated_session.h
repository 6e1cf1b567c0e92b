#pragma once

#include <memory>
#include <string>

#include "platform/ko/periodic_task.h"
#include "sensor/simulation/simulated_sensor_manager.h"
#include "session/internal/room_map.h"
#include "session/session.h"

namespace QV::session {

/**
 * Simulated sensors of a kind in a map. The robot is where it is put; driven, it stops before what
 * is not free. For the thread that time goes by on.
 */
class SimulatedSession : public Session {
 public:
  /** UsageError for a kind without sensors. */
  SimulatedSession(int kind, OccupancyMap map, const Math::Pose2D& start);

  const sensor::NavigationModule& getNavigation() const override { return navigation; }
  sensor::SensorManager& getManager() override { return *manager; }
  boost::shared_ptr<const OccupancyMap> getSharedMap() const override { return map; }
  Math::Pose2D getPose() const override { return pose; }
  void setPose(const Math::Pose2D& newPose) override;

  Model::PointMeaning getMeaning(const std::string& sensor) const override;
  std::string getTitle() const override;
  Frame getFrame() const override { return Frame::map; }
  ko::Duration getSettlingTime() const override { return ko::Duration::zero(); }

  void follow(const PathFollower& path, double seconds) override;
  void drive(const Math::Pose2D& velocity) override;
  Math::Pose2D getVelocity() const override { return velocity; }
  float getRadius() const override { return 0.25f; }

 private:
  void xMove();

  const int kind;
  const boost::shared_ptr<OccupancyMap> map;
  const boost::shared_ptr<sensor::SimulatedSensorManager> manager;
  sensor::NavigationModule navigation;
  Math::Pose2D pose;
  Math::Pose2D command;
  Math::Pose2D velocity;
  /** Made when it first drives. */
  std::unique_ptr<RoomMap> room;
  ko::PeriodicTask driving;
};

/** UsageError unless there are simulated sensors for `kind`. */
void checkKind(int kind);

}  // namespace QV::session
