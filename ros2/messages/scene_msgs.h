#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/message_type.h"
#include "ros2/messages/sensor_msgs.h"

/** The messages about places of things, and how they are drawn. Metres, radians. */
namespace QV::ros2 {

namespace nav_msgs {

/** The pose is in the header's frame, the twist in that of the child. */
struct QV_API Odometry {
  std_msgs::Header header;
  std::string child_frame_id;
  geometry_msgs::PoseWithCovariance pose;
  geometry_msgs::TwistWithCovariance twist;

  static const MessageType& getType();
  friend bool operator==(const Odometry&, const Odometry&) = default;
};

/** The origin is the outer corner of cell (0, 0). */
struct QV_API MapMetaData {
  builtin_interfaces::Time map_load_time;
  float resolution = 0.0f;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  geometry_msgs::Pose origin;

  static const MessageType& getType();
  friend bool operator==(const MapMetaData&, const MapMetaData&) = default;
};

/** A grid by rows from the bottom left; 0 free, 100 occupied, -1 unknown. */
struct QV_API OccupancyGrid {
  std_msgs::Header header;
  MapMetaData info;
  std::vector<std::int8_t> data;

  static const MessageType& getType();
  friend bool operator==(const OccupancyGrid&, const OccupancyGrid&) = default;
};

struct QV_API Path {
  std_msgs::Header header;
  std::vector<geometry_msgs::PoseStamped> poses;

  static const MessageType& getType();
  friend bool operator==(const Path&, const Path&) = default;
};

}  // namespace nav_msgs

namespace visualization_msgs {

struct QV_API UVCoordinate {
  float u = 0.0f;
  float v = 0.0f;

  static const MessageType& getType();
  friend bool operator==(const UVCoordinate&, const UVCoordinate&) = default;
};

struct QV_API MeshFile {
  std::string filename;
  std::vector<std::uint8_t> data;

  static const MessageType& getType();
  friend bool operator==(const MeshFile&, const MeshFile&) = default;
};

struct QV_API Marker {
  std_msgs::Header header;
  std::string ns;
  std::int32_t id = 0;
  /** 1 cube, 2 sphere, 3 cylinder, 4 line strip, 5 line list, 8 points, 9 text, 11 triangles. */
  std::int32_t type = 0;
  /** 0 add, 2 delete, 3 delete all. */
  std::int32_t action = 0;
  geometry_msgs::Pose pose;
  geometry_msgs::Vector3 scale;
  std_msgs::ColorRGBA color;
  /** The lifetime; 0 is for ever. */
  builtin_interfaces::Duration lifetime;
  bool frame_locked = false;
  std::vector<geometry_msgs::Point> points;
  std::vector<std_msgs::ColorRGBA> colors;
  std::string texture_resource;
  sensor_msgs::CompressedImage texture;
  std::vector<UVCoordinate> uv_coordinates;
  std::string text;
  std::string mesh_resource;
  MeshFile mesh_file;
  bool mesh_use_embedded_materials = false;

  static const MessageType& getType();
  friend bool operator==(const Marker&, const Marker&) = default;
};

struct QV_API MarkerArray {
  std::vector<Marker> markers;

  static const MessageType& getType();
  friend bool operator==(const MarkerArray&, const MarkerArray&) = default;
};

}  // namespace visualization_msgs

namespace vision_msgs {

struct QV_API ObjectHypothesis {
  std::string class_id;
  double score = 0.0;

  static const MessageType& getType();
  friend bool operator==(const ObjectHypothesis&, const ObjectHypothesis&) = default;
};

struct QV_API ObjectHypothesisWithPose {
  ObjectHypothesis hypothesis;
  geometry_msgs::PoseWithCovariance pose;

  static const MessageType& getType();
  friend bool operator==(const ObjectHypothesisWithPose&,
                         const ObjectHypothesisWithPose&) = default;
};

struct QV_API BoundingBox3D {
  geometry_msgs::Pose center;
  geometry_msgs::Vector3 size;

  static const MessageType& getType();
  friend bool operator==(const BoundingBox3D&, const BoundingBox3D&) = default;
};

struct QV_API Detection3D {
  std_msgs::Header header;
  std::vector<ObjectHypothesisWithPose> results;
  BoundingBox3D bbox;
  std::string id;

  static const MessageType& getType();
  friend bool operator==(const Detection3D&, const Detection3D&) = default;
};

struct QV_API Detection3DArray {
  std_msgs::Header header;
  std::vector<Detection3D> detections;

  static const MessageType& getType();
  friend bool operator==(const Detection3DArray&, const Detection3DArray&) = default;
};

}  // namespace vision_msgs

}  // namespace QV::ros2
