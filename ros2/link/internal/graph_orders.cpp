#include "ros2/link/internal/graph_orders.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/navigation/internal/map_shift.h"
#include "ros2/recording/internal/conversions.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

constexpr double kMostSecondsOff = 10.0;
constexpr double kMostLengthOff = 0.1;
constexpr Qos kStream{false, false, 1};
constexpr Qos kOrder{true, false, 10};

[[noreturn]] void refuse(const std::string& expected, const std::string& given) {
  throw std::runtime_error("refused until it is right: " + expected + " expected, " + given +
                           " given");
}

void expectFinite(const char* what, double number) {
  if (!(std::abs(number) <= std::numeric_limits<float>::max()))
    refuse(std::string("a finite ") + what, std::to_string(number));
}

template <typename Message>
WireTopic wireTopicOf(const GraphInput<Message>& input) {
  const GraphTopic& topic = input.getTopic();
  return {topic, "rt" + topic.name, Message::getType().getDdsName(), true};
}

}  // namespace

Math::Pose2D velocityOf(const geometry_msgs::Twist& twist) {
  expectFinite("linear.x", twist.linear.x);
  expectFinite("linear.y", twist.linear.y);
  expectFinite("angular.z", twist.angular.z);
  return {static_cast<float>(twist.linear.x), static_cast<float>(twist.linear.y),
          static_cast<float>(twist.angular.z)};
}

void checkStamp(const builtin_interfaces::Time& stamp) {
  if (stamp == builtin_interfaces::Time{}) return;
  const double off =
      stamp.sec + 1e-9 * stamp.nanosec - 1e-9 * static_cast<double>(logTimeOf(ko::Clock::now()));
  if (std::abs(off) > kMostSecondsOff)
    refuse("a stamp of /clock's time (use_sim_time)", "one " + std::to_string(off) + " s off it");
}

void checkPose(const geometry_msgs::Pose& pose) {
  expectFinite("position.x", pose.position.x);
  expectFinite("position.y", pose.position.y);
  const auto& q = pose.orientation;
  const double length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  if (!(std::abs(length - 1.0) <= kMostLengthOff))
    refuse("an orientation of length 1", std::to_string(length));
}

GraphOrders::Velocities::Velocities(GraphNode& node)
    : plain(node, "cmd_vel", kStream), stamped(node, "cmd_vel", kStream) {}

GraphOrders::Places::Places(GraphNode& node)
    : pose(node, "initialpose", kOrder), goal(node, "goal_pose", kOrder) {}

GraphOrders::GraphOrders(GraphNode& node, const FrameNames& names, const GraphRobotOptions& options)
    : map(names.ofMap()), utm(names.ofUtm()) {
  if (options.isDriven) velocities.emplace(node);
  if (options.isDriven && options.knowsItsWay) places.emplace(node);
}

Math::Pose2D GraphOrders::xPlaceOf(const std_msgs::Header& header, geometry_msgs::Pose pose,
                                   const MapShift& shift) const {
  if (isShifted(shift) && header.frame_id == utm) {
    pose.position.x -= shift.x;
    pose.position.y -= shift.y;
  } else if (header.frame_id != map) {
    const std::string orUtm = isShifted(shift) ? " or \"" + utm + "\"" : "";
    refuse("frame \"" + map + "\"" + orUtm, "\"" + header.frame_id + "\"");
  }
  checkStamp(header.stamp);
  checkPose(pose);
  return poseOf(pose);
}

void GraphOrders::obey(session::Session& session) {
  const auto drive = [&](const geometry_msgs::Twist& twist) {
    session.drive(velocityOf(twist), GraphRobotOptions::kHold);
    return true;
  };
  if (places) xObeyPlaces(session);
  if (!velocities) return;
  velocities->plain.take(drive);
  velocities->stamped.take([&](const auto& message) {
    checkStamp(message.header.stamp);
    return drive(message.twist);
  });
}

void GraphOrders::xObeyPlaces(session::Session& session) {
  const auto known = session.getMap();
  const MapShift shift = known ? known->getShift() : MapShift();
  places->pose.take([&](const auto& message) {
    session.setPose(xPlaceOf(message.header, message.pose.pose, shift));
    return true;
  });
  if (search) places->goal.judge([&] { return xGoOnToGoal(); });
  places->goal.take([&](const auto& message) {
    return xGoTo(session,
                 Math::position2DFromPose2D(xPlaceOf(message.header, message.pose, shift)));
  });
}

// A goal that is repeated faster than its path is found must not begin the search again.
bool GraphOrders::xGoTo(session::Session& session, const Math::Position2D& place) {
  if (search && search->getGoal() == place) return false;
  search.reset();
  if (session::SessionParts::of(session).driver.getGoal() == place) return true;
  search = std::make_unique<session::GoalSearch>(session, place);
  return false;
}

bool GraphOrders::xGoOnToGoal() {
  auto going = std::move(search);
  if (going->isReplaced()) return false;
  if (going->finish()) return true;
  search = std::move(going);
  return false;
}

std::vector<WireTopic> GraphOrders::getTopics() const {
  std::vector<WireTopic> topics;
  if (velocities) {
    topics.push_back(wireTopicOf(velocities->plain));
    topics.push_back(wireTopicOf(velocities->stamped));
  }
  if (places) {
    topics.push_back(wireTopicOf(places->pose));
    topics.push_back(wireTopicOf(places->goal));
  }
  return topics;
}

}  // namespace QV::ros2
