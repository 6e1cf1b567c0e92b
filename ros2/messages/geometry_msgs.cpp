#include "ros2/messages/geometry_msgs.h"

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

namespace builtin_interfaces {

const MessageType& Time::getType() {
  static const MessageType type(makeType<Time>("builtin_interfaces/msg/Time",
                                               {{"sec", &Time::sec}, {"nanosec", &Time::nanosec}}));
  return type;
}

const MessageType& Duration::getType() {
  static const MessageType type(
      makeType<Duration>("builtin_interfaces/msg/Duration",
                         {{"sec", &Duration::sec}, {"nanosec", &Duration::nanosec}}));
  return type;
}

}  // namespace builtin_interfaces

namespace std_msgs {

const MessageType& Header::getType() {
  static const MessageType type(makeType<Header>(
      "std_msgs/msg/Header", {{"stamp", &Header::stamp}, {"frame_id", &Header::frame_id}}));
  return type;
}

const MessageType& String::getType() {
  static const MessageType type(makeType<String>("std_msgs/msg/String", {{"data", &String::data}}));
  return type;
}

const MessageType& ColorRGBA::getType() {
  static const MessageType type(makeType<ColorRGBA>(
      "std_msgs/msg/ColorRGBA",
      {{"r", &ColorRGBA::r}, {"g", &ColorRGBA::g}, {"b", &ColorRGBA::b}, {"a", &ColorRGBA::a}}));
  return type;
}

}  // namespace std_msgs

namespace rosgraph_msgs {

const MessageType& Clock::getType() {
  static const MessageType type(
      makeType<Clock>("rosgraph_msgs/msg/Clock", {{"clock", &Clock::clock}}));
  return type;
}

}  // namespace rosgraph_msgs

namespace geometry_msgs {

const MessageType& Point::getType() {
  static const MessageType type(makeType<Point>(
      "geometry_msgs/msg/Point", {{"x", &Point::x}, {"y", &Point::y}, {"z", &Point::z}}));
  return type;
}

const MessageType& Vector3::getType() {
  static const MessageType type(makeType<Vector3>(
      "geometry_msgs/msg/Vector3", {{"x", &Vector3::x}, {"y", &Vector3::y}, {"z", &Vector3::z}}));
  return type;
}

const MessageType& Quaternion::getType() {
  static const MessageType type(
      makeType<Quaternion>("geometry_msgs/msg/Quaternion", {{"x", &Quaternion::x},
                                                            {"y", &Quaternion::y},
                                                            {"z", &Quaternion::z},
                                                            {"w", &Quaternion::w}}));
  return type;
}

const MessageType& Pose::getType() {
  static const MessageType type(
      makeType<Pose>("geometry_msgs/msg/Pose",
                     {{"position", &Pose::position}, {"orientation", &Pose::orientation}}));
  return type;
}

const MessageType& Transform::getType() {
  static const MessageType type(makeType<Transform>(
      "geometry_msgs/msg/Transform",
      {{"translation", &Transform::translation}, {"rotation", &Transform::rotation}}));
  return type;
}

const MessageType& TransformStamped::getType() {
  static const MessageType type(makeType<TransformStamped>(
      "geometry_msgs/msg/TransformStamped", {{"header", &TransformStamped::header},
                                             {"child_frame_id", &TransformStamped::child_frame_id},
                                             {"transform", &TransformStamped::transform}}));
  return type;
}

const MessageType& Twist::getType() {
  static const MessageType type(makeType<Twist>(
      "geometry_msgs/msg/Twist", {{"linear", &Twist::linear}, {"angular", &Twist::angular}}));
  return type;
}

const MessageType& TwistStamped::getType() {
  static const MessageType type(
      makeType<TwistStamped>("geometry_msgs/msg/TwistStamped",
                             {{"header", &TwistStamped::header}, {"twist", &TwistStamped::twist}}));
  return type;
}

const MessageType& PoseStamped::getType() {
  static const MessageType type(
      makeType<PoseStamped>("geometry_msgs/msg/PoseStamped",
                            {{"header", &PoseStamped::header}, {"pose", &PoseStamped::pose}}));
  return type;
}

const MessageType& PoseWithCovariance::getType() {
  static const MessageType type(makeType<PoseWithCovariance>(
      "geometry_msgs/msg/PoseWithCovariance",
      {{"pose", &PoseWithCovariance::pose}, {"covariance", &PoseWithCovariance::covariance}}));
  return type;
}

const MessageType& PoseWithCovarianceStamped::getType() {
  static const MessageType type(
      makeType<PoseWithCovarianceStamped>("geometry_msgs/msg/PoseWithCovarianceStamped",
                                          {{"header", &PoseWithCovarianceStamped::header},
                                           {"pose", &PoseWithCovarianceStamped::pose}}));
  return type;
}

const MessageType& TwistWithCovariance::getType() {
  static const MessageType type(makeType<TwistWithCovariance>(
      "geometry_msgs/msg/TwistWithCovariance",
      {{"twist", &TwistWithCovariance::twist}, {"covariance", &TwistWithCovariance::covariance}}));
  return type;
}

}  // namespace geometry_msgs

namespace tf2_msgs {

const MessageType& TFMessage::getType() {
  static const MessageType type(
      makeType<TFMessage>("tf2_msgs/msg/TFMessage", {{"transforms", &TFMessage::transforms}}));
  return type;
}

}  // namespace tf2_msgs

}  // namespace QV::ros2
