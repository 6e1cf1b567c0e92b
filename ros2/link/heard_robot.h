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

struct QV_API HeardRobotOptions {
  GraphOptions graph = graphOptionsFromEnvironment();
  std::string node = "qv_sensors";
  /** The namespace of this node and of all default topic names but those of tf and /clock. */
  std::string nameSpace = "/";
  /** The description (URDF). If empty, /robot_description is read if it has sensors of known kinds;
   * else a description is made of the topics. A sensor's property "topic" names its topic.
   * Without it, that of a laser named NAME is "/NAME/scan". */
  std::string description = {};
  /** A map that replaces /map. */
  boost::shared_ptr<const OccupancyMap> map = nullptr;
  /** True: /clock. False: the wall clock. Not set: /clock if it is published. */
  std::optional<bool> usesSimTime = std::nullopt;
  /** The factory that makes a session's sensors. Its kinds are also those by which the description
   * is read, with or without a session. */
  sensor::SensorFactory sensors = sensor::SensorFactory::standard();
  /** Called about twenty times a second during discovery; false ends that with
   * std::runtime_error. */
  std::function<bool()> goesOn = {};
};

/**
 * Reads a robot of a ROS 2 graph: its messages fill the memory and modules behind a broker, where
 * sensors read them. openHeardRobot() makes a session of it.
 * - Frames: those of the graph's tf; records as those of RealSensorManager.
 * - Units: those of the messages: metres, radians, m/s, rad/s.
 * - Lifetime: not copyable. The constructor takes up to 11 s: 2 s for topics, then 3 s each for
 *   /clock, the map and the sensors' first messages. With /clock the caller must own and advance a
 *   ko::SimulatedTime.
 * - Threads: thread-safe.
 * - Errors: malformed messages are refused and logged.
 *
 *     QV::ros2::HeardRobotOptions options;
 *     options.usesSimTime = false;
 *     QV::ros2::HeardRobot heard(options);
 *     QV::sensor::RealSensorManager sensors(heard.getBroker());
 *     heard.obey(&sensors);  // and heard.obey(nullptr) before `sensors` ends
 */
class QV_API HeardRobot {
 public:
  /** Throws std::runtime_error without a network, for a bad description, and without a description
   * and topics to derive one from. */
  explicit HeardRobot(const HeardRobotOptions& options = {});
  ~HeardRobot();
  HeardRobot(const HeardRobot&) = delete;
  HeardRobot& operator=(const HeardRobot&) = delete;

  const boost::shared_ptr<QVBroker>& getBroker() const;
  /** The description, as URDF. */
  const std::string& getDescription() const;
  /** The pose (m, rad) in the map, or, as the log then says, in the root frame of tf or in that of
   * odometry. */
  Math::Pose2D getPose() const;
  /** Publishes a velocity on cmd_vel (x forward, y left, theta) until the next call. */
  void drive(const Math::Pose2D& velocity);

  /** Subscribes only to topics of sensors that `manager` has started. Without one (before the first
   * call, and after null) all topics are subscribed. Set null before the manager is destroyed. */
  void obey(const sensor::SensorManager* manager);

 private:
  std::unique_ptr<class HeardModules> modules;
};

/** Opens a session by the wall clock or /clock. If that clock jumps back, or ahead by more than a
 * minute, session time goes on without the jump; if it stands still, Session::run returns early.
 * Throws as the constructor does, and std::runtime_error if nobody publishes a /clock that was
 * asked for. */
QV_API std::unique_ptr<session::Session> openHeardRobot(const HeardRobotOptions& options = {});

/** The description (URDF) with which such a robot would be opened. */
QV_API std::string describeHeardRobot(const HeardRobotOptions& options = {});

}  // namespace QV::ros2
