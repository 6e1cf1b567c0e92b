#include "ros2/messages/sensor_msgs.h"

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

namespace sensor_msgs {

namespace {

MessageType makeRange(bool hasVariance) {
  std::vector<Member<Range>> members = {{"header", &Range::header},
                                        {"radiation_type", &Range::radiation_type},
                                        {"field_of_view", &Range::field_of_view},
                                        {"min_range", &Range::min_range},
                                        {"max_range", &Range::max_range},
                                        {"range", &Range::range}};
  if (hasVariance) members.push_back({"variance", &Range::variance});
  return makeType<Range>("sensor_msgs/msg/Range", members);
}

}  // namespace

const MessageType& LaserScan::getType() {
  static const MessageType type(makeType<LaserScan>(
      "sensor_msgs/msg/LaserScan", {{"header", &LaserScan::header},
                                    {"angle_min", &LaserScan::angle_min},
                                    {"angle_max", &LaserScan::angle_max},
                                    {"angle_increment", &LaserScan::angle_increment},
                                    {"time_increment", &LaserScan::time_increment},
                                    {"scan_time", &LaserScan::scan_time},
                                    {"range_min", &LaserScan::range_min},
                                    {"range_max", &LaserScan::range_max},
                                    {"ranges", &LaserScan::ranges},
                                    {"intensities", &LaserScan::intensities}}));
  return type;
}

const MessageType& Range::getType() {
  static const MessageType type(makeRange(true));
  return type;
}

const MessageType& Range::getTypeWithoutVariance() {
  static const MessageType type(makeRange(false));
  return type;
}

const MessageType& PointField::getType() {
  static const MessageType type(
      makeType<PointField>("sensor_msgs/msg/PointField", {{"name", &PointField::name},
                                                          {"offset", &PointField::offset},
                                                          {"datatype", &PointField::datatype},
                                                          {"count", &PointField::count}}));
  return type;
}

const MessageType& PointCloud2::getType() {
  static const MessageType type(makeType<PointCloud2>("sensor_msgs/msg/PointCloud2",
                                                      {{"header", &PointCloud2::header},
                                                       {"height", &PointCloud2::height},
                                                       {"width", &PointCloud2::width},
                                                       {"fields", &PointCloud2::fields},
                                                       {"is_bigendian", &PointCloud2::is_bigendian},
                                                       {"point_step", &PointCloud2::point_step},
                                                       {"row_step", &PointCloud2::row_step},
                                                       {"data", &PointCloud2::data},
                                                       {"is_dense", &PointCloud2::is_dense}}));
  return type;
}

const MessageType& Image::getType() {
  static const MessageType type(
      makeType<Image>("sensor_msgs/msg/Image", {{"header", &Image::header},
                                                {"height", &Image::height},
                                                {"width", &Image::width},
                                                {"encoding", &Image::encoding},
                                                {"is_bigendian", &Image::is_bigendian},
                                                {"step", &Image::step},
                                                {"data", &Image::data}}));
  return type;
}

const MessageType& CompressedImage::getType() {
  static const MessageType type(makeType<CompressedImage>("sensor_msgs/msg/CompressedImage",
                                                          {{"header", &CompressedImage::header},
                                                           {"format", &CompressedImage::format},
                                                           {"data", &CompressedImage::data}}));
  return type;
}

const MessageType& RegionOfInterest::getType() {
  static const MessageType type(makeType<RegionOfInterest>(
      "sensor_msgs/msg/RegionOfInterest", {{"x_offset", &RegionOfInterest::x_offset},
                                           {"y_offset", &RegionOfInterest::y_offset},
                                           {"height", &RegionOfInterest::height},
                                           {"width", &RegionOfInterest::width},
                                           {"do_rectify", &RegionOfInterest::do_rectify}}));
  return type;
}

const MessageType& CameraInfo::getType() {
  static const MessageType type(makeType<CameraInfo>(
      "sensor_msgs/msg/CameraInfo", {{"header", &CameraInfo::header},
                                     {"height", &CameraInfo::height},
                                     {"width", &CameraInfo::width},
                                     {"distortion_model", &CameraInfo::distortion_model},
                                     {"d", &CameraInfo::d},
                                     {"k", &CameraInfo::k},
                                     {"r", &CameraInfo::r},
                                     {"p", &CameraInfo::p},
                                     {"binning_x", &CameraInfo::binning_x},
                                     {"binning_y", &CameraInfo::binning_y},
                                     {"roi", &CameraInfo::roi}}));
  return type;
}

const MessageType& JointState::getType() {
  static const MessageType type(
      makeType<JointState>("sensor_msgs/msg/JointState", {{"header", &JointState::header},
                                                          {"name", &JointState::name},
                                                          {"position", &JointState::position},
                                                          {"velocity", &JointState::velocity},
                                                          {"effort", &JointState::effort}}));
  return type;
}

}  // namespace sensor_msgs

}  // namespace QV::ros2
