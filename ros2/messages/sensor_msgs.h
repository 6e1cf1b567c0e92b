#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/message_type.h"

/** The messages of sensors. Metres, radians, seconds. */
namespace QV::ros2 {

namespace sensor_msgs {

/** Stamped with its first ray; angles about z from the x axis, that of the last ray is `angle_max`.
 * A range is valid from range_min to range_max; -inf is too near, +inf nothing seen, NaN a bad
 * reading. */
struct QV_API LaserScan {
  std_msgs::Header header;
  float angle_min = 0.0f;
  float angle_max = 0.0f;
  float angle_increment = 0.0f;
  float time_increment = 0.0f;
  float scan_time = 0.0f;
  float range_min = 0.0f;
  float range_max = 0.0f;
  std::vector<float> ranges;
  /** The intensities: none, or one for each range. */
  std::vector<float> intensities;

  static const MessageType& getType();
  friend bool operator==(const LaserScan&, const LaserScan&) = default;
};

/** A cone along x; `field_of_view` is the full angle. */
struct QV_API Range {
  std_msgs::Header header;
  /** 0 ultrasound, 1 infrared. */
  std::uint8_t radiation_type = 0;
  float field_of_view = 0.0f;
  float min_range = 0.0f;
  float max_range = 0.0f;
  float range = 0.0f;
  float variance = 0.0f;

  static const MessageType& getType();
  /** The type as it was up to Humble. */
  static const MessageType& getTypeWithoutVariance();
  friend bool operator==(const Range&, const Range&) = default;
};

struct QV_API PointField {
  std::string name;
  std::uint32_t offset = 0;
  /** The type of the numbers: 7 is float32, 8 float64. */
  std::uint8_t datatype = 0;
  std::uint32_t count = 0;

  static const MessageType& getType();
  friend bool operator==(const PointField&, const PointField&) = default;
};

struct QV_API PointCloud2 {
  std_msgs::Header header;
  std::uint32_t height = 0;
  std::uint32_t width = 0;
  std::vector<PointField> fields;
  bool is_bigendian = false;
  std::uint32_t point_step = 0;
  std::uint32_t row_step = 0;
  std::vector<std::uint8_t> data;
  bool is_dense = false;

  static const MessageType& getType();
  friend bool operator==(const PointCloud2&, const PointCloud2&) = default;
};

/** Depth lies along z: "32FC1" in metres, "16UC1" in millimetres with 0 for nothing. */
struct QV_API Image {
  std_msgs::Header header;
  std::uint32_t height = 0;
  std::uint32_t width = 0;
  std::string encoding;
  std::uint8_t is_bigendian = 0;
  std::uint32_t step = 0;
  std::vector<std::uint8_t> data;

  static const MessageType& getType();
  friend bool operator==(const Image&, const Image&) = default;
};

struct QV_API CompressedImage {
  std_msgs::Header header;
  std::string format;
  std::vector<std::uint8_t> data;

  static const MessageType& getType();
  friend bool operator==(const CompressedImage&, const CompressedImage&) = default;
};

struct QV_API RegionOfInterest {
  std::uint32_t x_offset = 0;
  std::uint32_t y_offset = 0;
  std::uint32_t height = 0;
  std::uint32_t width = 0;
  bool do_rectify = false;

  static const MessageType& getType();
  friend bool operator==(const RegionOfInterest&, const RegionOfInterest&) = default;
};

/** k, r and p by rows; k[0] is 0 if nobody has calibrated it. */
struct QV_API CameraInfo {
  std_msgs::Header header;
  std::uint32_t height = 0;
  std::uint32_t width = 0;
  std::string distortion_model;
  std::vector<double> d;
  std::array<double, 9> k{};
  std::array<double, 9> r{};
  std::array<double, 12> p{};
  std::uint32_t binning_x = 0;
  std::uint32_t binning_y = 0;
  RegionOfInterest roi;

  static const MessageType& getType();
  friend bool operator==(const CameraInfo&, const CameraInfo&) = default;
};

/** Each list is empty or as long as `name`. */
struct QV_API JointState {
  std_msgs::Header header;
  std::vector<std::string> name;
  std::vector<double> position;
  std::vector<double> velocity;
  std::vector<double> effort;

  static const MessageType& getType();
  friend bool operator==(const JointState&, const JointState&) = default;
};

}  // namespace sensor_msgs

}  // namespace QV::ros2
