#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ros2/link/graph_robot.h"
#include "ros2/link/internal/graph_input.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/recording/internal/frame_names.h"
#include "session/internal/goal_search.h"

namespace QV::ros2 {

/** The orders that others give a robot: velocities, where it is, where it is to go. */
class QV_API GraphOrders {
 public:
  /** `node` must outlive it. */
  GraphOrders(GraphNode& node, const FrameNames& names, const GraphRobotOptions& options);

  /** Obeys, on the session's thread. The path to a goal is searched beside it. */
  void obey(session::Session& session);
  /** True while a path is searched. */
  bool isSearching() const { return search != nullptr; }

  std::vector<WireTopic> getTopics() const;

 private:
  /** The two types of /cmd_vel. */
  struct Velocities {
    explicit Velocities(GraphNode& node);
    GraphInput<geometry_msgs::Twist> plain;
    GraphInput<geometry_msgs::TwistStamped> stamped;
  };
  struct Places {
    explicit Places(GraphNode& node);
    GraphInput<geometry_msgs::PoseWithCovarianceStamped> pose;
    GraphInput<geometry_msgs::PoseStamped> goal;
  };

  void xObeyPlaces(session::Session& session);
  bool xGoTo(session::Session& session, const Math::Position2D& place);
  bool xGoOnToGoal();
  /** `shift` is the map's. */
  Math::Pose2D xPlaceOf(const std_msgs::Header& header, geometry_msgs::Pose pose,
                        const MapShift& shift) const;

  const std::string map;
  const std::string utm;
  std::optional<Velocities> velocities;
  std::optional<Places> places;
  std::unique_ptr<session::GoalSearch> search;
};

/** Returns the commanded velocity. Throws std::runtime_error for an invalid one. */
Math::Pose2D velocityOf(const geometry_msgs::Twist& twist);
/** std::runtime_error for a stamp that is far from now; none at all is as good as now. */
void checkStamp(const builtin_interfaces::Time& stamp);
/** std::runtime_error for a pose that is none. */
void checkPose(const geometry_msgs::Pose& pose);

}  // namespace QV::ros2
