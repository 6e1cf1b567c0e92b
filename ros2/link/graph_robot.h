#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "outlets/outlet.h"
#include "ros2/graph/graph.h"
#include "session/session.h"

namespace QV::ros2 {

struct GraphRobotOptions {
  /** The name of the node; empty: the robot's. */
  std::string name = {};
  /** "/" or "/robot1"; of the topics but /clock and /diagnostics. */
  std::string nameSpace = "/";
  /** True if /tf and /tf_static are in the namespace, too. */
  bool hasOwnFrames = false;
  /** Other names of frames: "map", "odom", the root link, sensors. */
  std::map<std::string, std::string> frames = {};
  /** The prefix of all frames but the map's: "robot1/". */
  std::string framePrefix = {};
  /** True if it obeys /cmd_vel. */
  bool isDriven = true;
  /** True if it says where it is in the map, and obeys /initialpose and /goal_pose; else
   * somebody's navigation does. */
  bool knowsItsWay = true;
  /** True if a Range that met nothing is infinite, and not its greatest. */
  bool noEchoIsInfinite = false;

  static constexpr const char* kSubscriber = "ROS 2";
  /** The time for which a command of /cmd_vel holds, of the session's time. */
  static constexpr ko::Duration kHold{500'000'000};
};

/** A topic as it stands on the wire. */
struct QV_API WireTopic {
  GraphTopic topic;
  /** "rt/scan" */
  std::string ddsName;
  /** "sensor_msgs::msg::dds_::LaserScan_" */
  std::string ddsType;
  /** True if the robot reads it, and does not write it. */
  bool isInput = false;
};

/**
 * A session as a robot of a ROS 2 graph: what drivers measure and what is made of it goes out, and
 * it is driven. A sensor is wanted while a reader matches one of its topics. Stamps are of the
 * session's time and a second; none is ahead of /clock. See docs/ros2.md. Graph and session must
 * outlive it; for the thread that opened the session.
 */
class QV_API GraphRobot : public outlets::Outlet {
 public:
  /** A name that is none: std::invalid_argument. */
  GraphRobot(Graph& graph, session::Session& session, const GraphRobotOptions& options = {});
  ~GraphRobot() override;

  /** Does what the graph asks; call it before each piece of the session, 20 ms or so. */
  void obey();

  session::Demand getDemand() const override;
  bool isWatched() const override;
  void show(const session::Snapshot& snapshot) override;
  void finish() override;

  std::vector<WireTopic> getTopics() const;
  /** Messages that could not be sent. */
  std::uint64_t getLostCount() const;

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::ros2
