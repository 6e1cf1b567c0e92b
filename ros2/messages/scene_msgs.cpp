#include "ros2/messages/scene_msgs.h"

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

namespace nav_msgs {

const MessageType& Odometry::getType() {
  static const MessageType type(
      makeType<Odometry>("nav_msgs/msg/Odometry", {{"header", &Odometry::header},
                                                   {"child_frame_id", &Odometry::child_frame_id},
                                                   {"pose", &Odometry::pose},
                                                   {"twist", &Odometry::twist}}));
  return type;
}

const MessageType& MapMetaData::getType() {
  static const MessageType type(makeType<MapMetaData>(
      "nav_msgs/msg/MapMetaData", {{"map_load_time", &MapMetaData::map_load_time},
                                   {"resolution", &MapMetaData::resolution},
                                   {"width", &MapMetaData::width},
                                   {"height", &MapMetaData::height},
                                   {"origin", &MapMetaData::origin}}));
  return type;
}

const MessageType& OccupancyGrid::getType() {
  static const MessageType type(
      makeType<OccupancyGrid>("nav_msgs/msg/OccupancyGrid", {{"header", &OccupancyGrid::header},
                                                             {"info", &OccupancyGrid::info},
                                                             {"data", &OccupancyGrid::data}}));
  return type;
}

const MessageType& Path::getType() {
  static const MessageType type(
      makeType<Path>("nav_msgs/msg/Path", {{"header", &Path::header}, {"poses", &Path::poses}}));
  return type;
}

}  // namespace nav_msgs

namespace visualization_msgs {

const MessageType& UVCoordinate::getType() {
  static const MessageType type(makeType<UVCoordinate>(
      "visualization_msgs/msg/UVCoordinate", {{"u", &UVCoordinate::u}, {"v", &UVCoordinate::v}}));
  return type;
}

const MessageType& MeshFile::getType() {
  static const MessageType type(
      makeType<MeshFile>("visualization_msgs/msg/MeshFile",
                         {{"filename", &MeshFile::filename}, {"data", &MeshFile::data}}));
  return type;
}

const MessageType& Marker::getType() {
  static const MessageType type(
      makeType<Marker>("visualization_msgs/msg/Marker",
                       {{"header", &Marker::header},
                        {"ns", &Marker::ns},
                        {"id", &Marker::id},
                        {"type", &Marker::type},
                        {"action", &Marker::action},
                        {"pose", &Marker::pose},
                        {"scale", &Marker::scale},
                        {"color", &Marker::color},
                        {"lifetime", &Marker::lifetime},
                        {"frame_locked", &Marker::frame_locked},
                        {"points", &Marker::points},
                        {"colors", &Marker::colors},
                        {"texture_resource", &Marker::texture_resource},
                        {"texture", &Marker::texture},
                        {"uv_coordinates", &Marker::uv_coordinates},
                        {"text", &Marker::text},
                        {"mesh_resource", &Marker::mesh_resource},
                        {"mesh_file", &Marker::mesh_file},
                        {"mesh_use_embedded_materials", &Marker::mesh_use_embedded_materials}}));
  return type;
}

const MessageType& MarkerArray::getType() {
  static const MessageType type(makeType<MarkerArray>("visualization_msgs/msg/MarkerArray",
                                                      {{"markers", &MarkerArray::markers}}));
  return type;
}

}  // namespace visualization_msgs

namespace vision_msgs {

const MessageType& ObjectHypothesis::getType() {
  static const MessageType type(makeType<ObjectHypothesis>(
      "vision_msgs/msg/ObjectHypothesis",
      {{"class_id", &ObjectHypothesis::class_id}, {"score", &ObjectHypothesis::score}}));
  return type;
}

const MessageType& ObjectHypothesisWithPose::getType() {
  static const MessageType type(
      makeType<ObjectHypothesisWithPose>("vision_msgs/msg/ObjectHypothesisWithPose",
                                         {{"hypothesis", &ObjectHypothesisWithPose::hypothesis},
                                          {"pose", &ObjectHypothesisWithPose::pose}}));
  return type;
}

const MessageType& BoundingBox3D::getType() {
  static const MessageType type(makeType<BoundingBox3D>(
      "vision_msgs/msg/BoundingBox3D",
      {{"center", &BoundingBox3D::center}, {"size", &BoundingBox3D::size}}));
  return type;
}

const MessageType& Detection3D::getType() {
  static const MessageType type(
      makeType<Detection3D>("vision_msgs/msg/Detection3D", {{"header", &Detection3D::header},
                                                            {"results", &Detection3D::results},
                                                            {"bbox", &Detection3D::bbox},
                                                            {"id", &Detection3D::id}}));
  return type;
}

const MessageType& Detection3DArray::getType() {
  static const MessageType type(makeType<Detection3DArray>(
      "vision_msgs/msg/Detection3DArray",
      {{"header", &Detection3DArray::header}, {"detections", &Detection3DArray::detections}}));
  return type;
}

}  // namespace vision_msgs

}  // namespace QV::ros2
