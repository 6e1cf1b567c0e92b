#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <fastcdr/Cdr.h>
#include <string>
#include <vector>

namespace QV::test {

/** A message by another maker's encoder, part by part. */
template <typename... Parts>
std::vector<std::uint8_t> encoded(const Parts&... parts) {
  eprosima::fastcdr::FastBuffer buffer;
  eprosima::fastcdr::Cdr cdr(buffer, eprosima::fastcdr::Cdr::LITTLE_ENDIANNESS,
                             eprosima::fastcdr::Cdr::DDS_CDR);
  cdr.serialize_encapsulation();
  (cdr << ... << parts);
  const auto* const begin = reinterpret_cast<const std::uint8_t*>(cdr.getBufferPointer());
  return {begin, begin + cdr.getSerializedDataLength()};
}

/** A message that a robot or tool publishes. */
struct Input {
  /** The topic's DDS name. */
  std::string topic;
  std::string type;
  bool isKept = false;
  std::vector<std::uint8_t> cdr = {};
};

/** Returns one message of each input topic; the test has the same values. */
inline std::vector<Input> allInputs() {
  using std::string;
  const std::int32_t sec = 12;
  const std::uint32_t nanosec = 345'678'901;
  const std::uint32_t none = 0;
  const auto one = std::uint32_t{1};
  const auto two = std::uint32_t{2};
  const std::uint8_t byte = 1;
  std::array<double, 36> covariance{};
  covariance[0] = 0.25;
  covariance[35] = 0.5;
  const std::vector<std::uint8_t> pixels = {1, 2, 3, 4, 5, 6, 7, 8};
  return {
      {"rt/cmd_vel", "geometry_msgs::msg::dds_::Twist_", false,
       encoded(0.5, 0.25, 0.125, 1.5, 2.5, -3.5)},
      {"rt/cmd_vel", "geometry_msgs::msg::dds_::TwistStamped_", false,
       encoded(sec, nanosec, string("base"), -0.5, 0.25, 0.125, 1.5, 2.5, 3.5)},
      {"rt/initialpose", "geometry_msgs::msg::dds_::PoseWithCovarianceStamped_", false,
       encoded(sec, nanosec, string("map"), 1.0, 2.0, 0.5, 0.0, 0.0, 0.6, 0.8, covariance)},
      {"rt/goal_pose", "geometry_msgs::msg::dds_::PoseStamped_", false,
       encoded(sec, nanosec, string("map"), 3.0, -4.0, 0.0, 0.0, 0.0, -0.6, 0.8)},
      {"rt/scan", "sensor_msgs::msg::dds_::LaserScan_", false,
       encoded(sec, nanosec, string("laser"), -1.5f, 1.5f, 1.5f, 0.001f, 0.1f, 0.05f, 12.0f,
               std::vector<float>{1.0f, 2.5f, HUGE_VALF}, std::vector<float>{7.0f})},
      {"rt/sonar", "sensor_msgs::msg::dds_::Range_", false,
       encoded(sec, nanosec, string("sonar"), byte, 0.5f, 0.2f, 4.0f, 1.25f, 0.01f)},
      {"rt/image", "sensor_msgs::msg::dds_::Image_", false,
       encoded(sec, nanosec, string("camera"), two, two, string("16UC1"), std::uint8_t{0},
               std::uint32_t{4}, pixels)},
      {"rt/camera_info", "sensor_msgs::msg::dds_::CameraInfo_", false,
       encoded(sec, nanosec, string("camera"), two, two, string("plumb_bob"),
               std::vector<double>{0.1, 0.2}, std::array<double, 9>{500.0},
               std::array<double, 9>{1.0}, std::array<double, 12>{501.0}, one, two, none, one, two,
               one, true)},
      {"rt/cloud", "sensor_msgs::msg::dds_::PointCloud2_", false,
       encoded(sec, nanosec, string("laser"), one, two, two, string("x"), none, std::uint8_t{7},
               one, string("intensity"), std::uint32_t{4}, std::uint8_t{2}, one, false,
               std::uint32_t{4}, std::uint32_t{8}, pixels, true)},
      {"rt/tf", "tf2_msgs::msg::dds_::TFMessage_", false,
       encoded(two, sec, nanosec, string("odom"), string("base"), 1.0, 2.0, 3.0, 0.0, 0.0, 0.6, 0.8,
               sec, nanosec, string("base"), string("laser"), 0.1, 0.2, 0.3, 0.0, 0.0, 0.0, 1.0)},
      {"rt/tf_static", "tf2_msgs::msg::dds_::TFMessage_", true,
       encoded(one, sec, nanosec, string("base"), string("sonar"), 0.5, 0.0, 0.25, 1.0, 0.0, 0.0,
               0.0)},
      {"rt/odom", "nav_msgs::msg::dds_::Odometry_", false,
       encoded(sec, nanosec, string("odom"), string("base"), 1.0, 2.0, 0.0, 0.0, 0.0, 0.6, 0.8,
               covariance, 0.5, 0.0, 0.0, 0.0, 0.0, 0.25, covariance)},
      {"rt/joint_states", "sensor_msgs::msg::dds_::JointState_", false,
       encoded(sec, nanosec, string(), std::vector<string>{"lift", "wheel"},
               std::vector<double>{0.5, 1.5}, std::vector<double>{0.25}, std::vector<double>{})},
      {"rt/people", "vision_msgs::msg::dds_::Detection3DArray_", false,
       encoded(sec, nanosec, string("camera"), one, sec, nanosec, string("camera"), one,
               string("person"), 0.75, 1.0, 2.0, 0.5, 0.0, 0.0, 0.0, 1.0, covariance, 1.0, 2.0, 0.5,
               0.0, 0.0, 0.0, 1.0, 0.5, 0.5, 1.75, string("7"))},
      {"rt/map", "nav_msgs::msg::dds_::OccupancyGrid_", true,
       encoded(sec, nanosec, string("map"), sec, nanosec, 0.05f, two, two, -1.0, -2.0, 0.0, 0.0,
               0.0, 0.0, 1.0, std::vector<std::int8_t>{0, 100, -1, 50})},
      {"rt/robot_description", "std_msgs::msg::dds_::String_", true,
       encoded(string("<robot name=\"\xc3\xa9\"/>"))},
      {"rt/clock", "rosgraph_msgs::msg::dds_::Clock_", false, encoded(sec, nanosec)},
  };
}

}  // namespace QV::test
