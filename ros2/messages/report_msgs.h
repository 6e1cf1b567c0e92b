#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/message_type.h"

/** The messages of a robot about itself, and this library's own records. */
namespace QV::ros2 {

namespace diagnostic_msgs {

struct QV_API KeyValue {
  std::string key;
  std::string value;

  static const MessageType& getType();
  friend bool operator==(const KeyValue&, const KeyValue&) = default;
};

struct QV_API DiagnosticStatus {
  /** 0 OK, 1 warning, 2 error, 3 stale. */
  std::byte level{};
  std::string name;
  std::string message;
  std::string hardware_id;
  std::vector<KeyValue> values;

  static const MessageType& getType();
  friend bool operator==(const DiagnosticStatus&, const DiagnosticStatus&) = default;
};

struct QV_API DiagnosticArray {
  std_msgs::Header header;
  std::vector<DiagnosticStatus> status;

  static const MessageType& getType();
  friend bool operator==(const DiagnosticArray&, const DiagnosticArray&) = default;
};

}  // namespace diagnostic_msgs

namespace rcl_interfaces {

struct QV_API Log {
  builtin_interfaces::Time stamp;
  /** 10 debug, 20 information, 30 warning, 40 error, 50 fatal. */
  std::uint8_t level = 0;
  std::string name;
  std::string msg;
  std::string file;
  std::string function;
  std::uint32_t line = 0;

  static const MessageType& getType();
  friend bool operator==(const Log&, const Log&) = default;
};

}  // namespace rcl_interfaces

namespace qv_msgs {

struct QV_API FieldOfView2D {
  float min_range = 0.0f;
  float max_range = 0.0f;
  float angular_range = 0.0f;
  std::int32_t ray_count = 0;

  static const MessageType& getType();
  friend bool operator==(const FieldOfView2D&, const FieldOfView2D&) = default;
};

struct QV_API Position3D {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;

  static const MessageType& getType();
  friend bool operator==(const Position3D&, const Position3D&) = default;
};

/**
 * A Math::MetricalData, bit for bit. Many points stand in a PointCloud2 or an ImagePoints of the
 * same time instead: `cloud` is its topic then, and the points are `cloud_count` of it from
 * `cloud_start` on.
 */
struct QV_API MetricalData {
  std::string sensor_name;
  std::string family_name;
  FieldOfView2D field_of_view;
  std::array<float, 12> sensor_transform{};
  std::vector<Position3D> points;
  std::string cloud;
  std::uint32_t cloud_start = 0;
  std::uint32_t cloud_count = 0;
  /** Nanoseconds of ko::Clock. */
  std::int64_t timestamp = 0;

  static const MessageType& getType();
  friend bool operator==(const MetricalData&, const MetricalData&) = default;
};

/**
 * Points as the pixels of a depth image that they were made of, in runs of pixels that follow each
 * other by rows. A pixel of `depth` millimetres gives, in 32-bit floats and multiplied in this
 * order, x = depth * 0.001, y = (column / width - 0.5) * depth * width_by_depth * -0.001 and
 * z = (0.5 - row / height) * depth * height_by_depth * 0.001: the camera's frame, in metres.
 */
struct QV_API ImagePoints {
  /** The topic of the image, and its log time. */
  std::string image;
  std::int64_t image_time = 0;
  /** The width that the image covers at a depth, divided by the depth. */
  float width_by_depth = 0.0f;
  float height_by_depth = 0.0f;
  /** The skips before the runs: pixels from the end of the one before, or back, and how many are
   * in it. */
  std::vector<std::int32_t> skips;
  std::vector<std::uint32_t> lengths;

  static const MessageType& getType();
  friend bool operator==(const ImagePoints&, const ImagePoints&) = default;
};

/** The records of a sensor at one time. */
struct QV_API Records {
  std::vector<MetricalData> records;

  static const MessageType& getType();
  friend bool operator==(const Records&, const Records&) = default;
};

struct QV_API SensorState {
  std::string name;
  bool started = false;
  bool enabled = false;
  bool diagnosis = false;
  std::vector<std::string> subscribers;

  static const MessageType& getType();
  friend bool operator==(const SensorState&, const SensorState&) = default;
};

struct QV_API SensorStates {
  std::vector<SensorState> sensors;

  static const MessageType& getType();
  friend bool operator==(const SensorStates&, const SensorStates&) = default;
};

/** A fault from `start` until before `end`, nanoseconds since the robot was made. */
struct QV_API Fault {
  std::string sensor;
  std::string kind;
  std::int64_t start = 0;
  std::int64_t end = 0;

  static const MessageType& getType();
  friend bool operator==(const Fault&, const Fault&) = default;
};

/** A command to the robot: a name, and the arguments that it needs. */
struct QV_API Command {
  std::string name;
  /** The subscriber on whose behalf it is. */
  std::string subscriber;
  /** The sensors, or families. */
  std::vector<std::string> sensors;
  bool on = false;
  std::vector<double> values;

  static const MessageType& getType();
  friend bool operator==(const Command&, const Command&) = default;
};

/**
 * The drivers' inputs to a robot's services at one time: memory keys that were set and events that
 * were raised, in order. A value is written in the order of its parts, an array before its
 * elements: a type for each part (0 invalid, 1 bool, 2 int, 3 float, 4 string, 5 array, 6 bytes), a
 * number for each but the invalid and the strings (the float as the bits of a double, the elements
 * of an array, the bytes one by one), a text for each string.
 */
struct QV_API Inputs {
  /** True if the body has made a step, after the writes. */
  bool stepped = false;
  /** Forward and leftward in m/s, turning in rad/s. */
  std::array<float, 3> velocity{};
  /** Each is known by its place from then on, counted from the start of the recording. */
  std::vector<std::string> new_keys;
  std::vector<std::uint32_t> keys;
  /** A flag for each key: true if an event of that name was raised. */
  std::vector<std::uint8_t> raised;
  std::vector<std::uint8_t> types;
  std::vector<std::int64_t> numbers;
  std::vector<std::string> texts;

  static const MessageType& getType();
  friend bool operator==(const Inputs&, const Inputs&) = default;
};

}  // namespace qv_msgs

}  // namespace QV::ros2
