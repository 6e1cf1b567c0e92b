#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/navigation/occupancy_map.h"
#include "ros2/graph/graph.h"
#include "sensor/core/sensor_manager.h"
#include "sensor/real/sensor_factory.h"
#include "session/session.h"

namespace QV::ros2 {

/** The choice of a robot on a graph, and how it is listened to. */
struct QV_API HeardRobotOptions {
  GraphOptions graph = graphOptionsFromEnvironment();
  std::string node = "qv_sensors";
  /** The namespace of the node; the topics that nobody named are in it, too. */
  std::string nameSpace = "/";
  /**
   * The description of the robot, as text (URDF). Each sensor's property "topic" names its topic,
   * default as in recordings ("/NAME/scan"). Empty: that of /robot_description if it has sensors of
   * ours, else one that is made after the topics.
   */
  std::string description = {};
  /** A map in place of what /map brings. */
  boost::shared_ptr<const OccupancyMap> map = nullptr;
  /** True if time goes by /clock, as fast as that does; unsaid: if somebody publishes it. */
  std::optional<bool> usesSimTime = std::nullopt;
  /** The makers of a session's sensors, and the kinds by which a description is read. */
  sensor::SensorFactory sensors = sensor::SensorFactory::standard();
  /** Asked some twenty times a second while it looks about: false ends that, std::runtime_error. */
  std::function<bool()> goesOn = {};
};

/**
 * A robot of a graph behind a broker: what its topics tell goes where sensors read it. A topic is
 * subscribed to while a sensor of it is started. What can't be understood is refused, which is
 * logged. To make one takes up to five seconds of looking about. Where its time is that of /clock,
 * the one who makes it moves a ko::SimulatedTime. Operations are safe from any thread.
 */
class QV_API HeardRobot {
 public:
  /** No network, a bad description, or no topic that makes a sensor: std::runtime_error. */
  explicit HeardRobot(const HeardRobotOptions& options = {});
  ~HeardRobot();
  HeardRobot(const HeardRobot&) = delete;
  HeardRobot& operator=(const HeardRobot&) = delete;

  const boost::shared_ptr<QVBroker>& getBroker() const;
  /** URDF. */
  const std::string& getDescription() const;
  /** The pose in the root frame of tf, else of the odometry: m, rad. */
  Math::Pose2D getPose() const;
  /** Forward and leftward in m/s, turning in rad/s, told on cmd_vel until the next one. */
  void drive(const Math::Pose2D& velocity);

  /**
   * Sets the manager whose started sensors say what is subscribed to, until null takes its place,
   * which it must outlive. Without one, as at first, all is.
   */
  void obey(const sensor::SensorManager* manager);

 private:
  std::unique_ptr<class HeardModules> modules;
};

/**
 * A session with such a robot. Its time is the wall clock's, or that of /clock, and the session
 * follows it; where that goes back, or leaps by more than a minute, the session's goes on. One that
 * stands still ends Session::run early. Errors as above, and nobody on /clock: std::runtime_error.
 */
QV_API std::unique_ptr<session::Session> openHeardRobot(const HeardRobotOptions& options = {});

/** The description of such a robot (URDF), as it would be opened. */
QV_API std::string describeHeardRobot(const HeardRobotOptions& options = {});

}  // namespace QV::ros2
