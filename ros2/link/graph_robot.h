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
  /** The name of the node; empty: the robot's name. */
  std::string name = {};
  /** The namespace of all topics except /clock, /diagnostics and tf: "/" or "/robot1". */
  std::string nameSpace = "/";
  /** True if /tf and /tf_static are in the namespace, too. */
  bool hasOwnFrames = false;
  /** Other names of frames: "map", "odom", "utm", the root link, sensors, cameras'
   * NAME_optical. */
  std::map<std::string, std::string> frames = {};
  /** The prefix of all frames but the map's and utm: "robot1/". */
  std::string framePrefix = {};
  /** True if it obeys /cmd_vel. */
  bool isDriven = true;
  /** True if the robot publishes map to odom and obeys /initialpose and /goal_pose; false if other
   * nodes do. */
  bool knowsItsWay = true;
  /** True if a miss is +inf in a Range; false if it is max_range. */
  bool noEchoIsInfinite = false;

  static constexpr const char* kSubscriber = "ROS 2";
  /** The session time for which a command of /cmd_vel holds. */
  static constexpr ko::Duration kHold{500'000'000};
};

/** A topic with its names in DDS. */
struct QV_API WireTopic {
  GraphTopic topic;
  /** The topic's name in DDS: "rt/scan". */
  std::string ddsName;
  /** The type's name in DDS: "sensor_msgs::msg::dds_::LaserScan_". */
  std::string ddsType;
  /** True if the robot reads it; false if it publishes it. */
  bool isInput = false;
};

/**
 * Publishes a session as a robot on a ROS 2 graph: measurements and records. Other nodes can drive
 * it. A sensor is wanted while a reader matches one of its topics. Stamps are session time + 1 s;
 * none is ahead of /clock. See docs/ros2.md. Use it on the session's thread. Graph and session must
 * outlive it.
 */
class QV_API GraphRobot : public outlets::Outlet {
 public:
  /** Throws std::invalid_argument for an invalid name. */
  GraphRobot(Graph& graph, session::Session& session, const GraphRobotOptions& options = {});
  ~GraphRobot() override;

  /** Executes the graph's commands; call it before each run of the session, every 20 ms or so. */
  void obey();

  session::Demand getDemand() const override;
  bool isWatched() const override;
  void show(const session::Snapshot& snapshot) override;
  void finish() override;

  std::vector<WireTopic> getTopics() const;
  /** Returns how many messages could not be sent. */
  std::uint64_t getLostCount() const;

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::ros2
