#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/message_type.h"

/** Time, headers, geometry, frames and the clock. Metres, radians, m/s, rad/s. */
namespace QV::ros2 {

namespace builtin_interfaces {

/** A time since the epoch, or since the start of a simulation. */
struct QV_API Time {
  std::int32_t sec = 0;
  /** The nanoseconds, below 10^9. */
  std::uint32_t nanosec = 0;

  static const MessageType& getType();
  friend bool operator==(const Time&, const Time&) = default;
};

struct QV_API Duration {
  std::int32_t sec = 0;
  std::uint32_t nanosec = 0;

  static const MessageType& getType();
  friend bool operator==(const Duration&, const Duration&) = default;
};

}  // namespace builtin_interfaces

namespace std_msgs {

struct QV_API Header {
  builtin_interfaces::Time stamp;
  std::string frame_id;

  static const MessageType& getType();
  friend bool operator==(const Header&, const Header&) = default;
};

struct QV_API String {
  std::string data;

  static const MessageType& getType();
  friend bool operator==(const String&, const String&) = default;
};

/** A colour, from 0 to 1; alpha 0 is invisible. */
struct QV_API ColorRGBA {
  float r = 0.0f;
  float g = 0.0f;
  float b = 0.0f;
  float a = 0.0f;

  static const MessageType& getType();
  friend bool operator==(const ColorRGBA&, const ColorRGBA&) = default;
};

}  // namespace std_msgs

namespace rosgraph_msgs {

struct QV_API Clock {
  builtin_interfaces::Time clock;

  static const MessageType& getType();
  friend bool operator==(const Clock&, const Clock&) = default;
};

}  // namespace rosgraph_msgs

namespace geometry_msgs {

struct QV_API Point {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  static const MessageType& getType();
  friend bool operator==(const Point&, const Point&) = default;
};

struct QV_API Vector3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  static const MessageType& getType();
  friend bool operator==(const Vector3&, const Vector3&) = default;
};

struct QV_API Quaternion {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  static const MessageType& getType();
  friend bool operator==(const Quaternion&, const Quaternion&) = default;
};

struct QV_API Pose {
  Point position;
  Quaternion orientation;

  static const MessageType& getType();
  friend bool operator==(const Pose&, const Pose&) = default;
};

struct QV_API Transform {
  Vector3 translation;
  Quaternion rotation;

  static const MessageType& getType();
  friend bool operator==(const Transform&, const Transform&) = default;
};

/** The frame `child_frame_id` in the frame of the header. */
struct QV_API TransformStamped {
  std_msgs::Header header;
  std::string child_frame_id;
  Transform transform;

  static const MessageType& getType();
  friend bool operator==(const TransformStamped&, const TransformStamped&) = default;
};

struct QV_API Twist {
  Vector3 linear;
  Vector3 angular;

  static const MessageType& getType();
  friend bool operator==(const Twist&, const Twist&) = default;
};

struct QV_API TwistStamped {
  std_msgs::Header header;
  Twist twist;

  static const MessageType& getType();
  friend bool operator==(const TwistStamped&, const TwistStamped&) = default;
};

struct QV_API PoseStamped {
  std_msgs::Header header;
  Pose pose;

  static const MessageType& getType();
  friend bool operator==(const PoseStamped&, const PoseStamped&) = default;
};

/** The covariance by rows over x, y, z and the rotations about them. */
struct QV_API PoseWithCovariance {
  Pose pose;
  std::array<double, 36> covariance{};

  static const MessageType& getType();
  friend bool operator==(const PoseWithCovariance&, const PoseWithCovariance&) = default;
};

struct QV_API PoseWithCovarianceStamped {
  std_msgs::Header header;
  PoseWithCovariance pose;

  static const MessageType& getType();
  friend bool operator==(const PoseWithCovarianceStamped&,
                         const PoseWithCovarianceStamped&) = default;
};

struct QV_API TwistWithCovariance {
  Twist twist;
  std::array<double, 36> covariance{};

  static const MessageType& getType();
  friend bool operator==(const TwistWithCovariance&, const TwistWithCovariance&) = default;
};

}  // namespace geometry_msgs

namespace tf2_msgs {

struct QV_API TFMessage {
  std::vector<geometry_msgs::TransformStamped> transforms;

  static const MessageType& getType();
  friend bool operator==(const TFMessage&, const TFMessage&) = default;
};

}  // namespace tf2_msgs

}  // namespace QV::ros2
