#include "ros2/messages/report_msgs.h"

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

namespace diagnostic_msgs {

const MessageType& KeyValue::getType() {
  static const MessageType type(makeType<KeyValue>(
      "diagnostic_msgs/msg/KeyValue", {{"key", &KeyValue::key}, {"value", &KeyValue::value}}));
  return type;
}

const MessageType& DiagnosticStatus::getType() {
  static const MessageType type(makeType<DiagnosticStatus>(
      "diagnostic_msgs/msg/DiagnosticStatus", {{"level", &DiagnosticStatus::level},
                                               {"name", &DiagnosticStatus::name},
                                               {"message", &DiagnosticStatus::message},
                                               {"hardware_id", &DiagnosticStatus::hardware_id},
                                               {"values", &DiagnosticStatus::values}}));
  return type;
}

const MessageType& DiagnosticArray::getType() {
  static const MessageType type(makeType<DiagnosticArray>(
      "diagnostic_msgs/msg/DiagnosticArray",
      {{"header", &DiagnosticArray::header}, {"status", &DiagnosticArray::status}}));
  return type;
}

}  // namespace diagnostic_msgs

namespace rcl_interfaces {

const MessageType& Log::getType() {
  static const MessageType type(
      makeType<Log>("rcl_interfaces/msg/Log", {{"stamp", &Log::stamp},
                                               {"level", &Log::level},
                                               {"name", &Log::name},
                                               {"msg", &Log::msg},
                                               {"file", &Log::file},
                                               {"function", &Log::function},
                                               {"line", &Log::line}}));
  return type;
}

}  // namespace rcl_interfaces

namespace qv_msgs {

const MessageType& FieldOfView2D::getType() {
  static const MessageType type(makeType<FieldOfView2D>(
      "qv_msgs/msg/FieldOfView2D", {{"min_range", &FieldOfView2D::min_range},
                                    {"max_range", &FieldOfView2D::max_range},
                                    {"angular_range", &FieldOfView2D::angular_range},
                                    {"ray_count", &FieldOfView2D::ray_count}}));
  return type;
}

const MessageType& Position3D::getType() {
  static const MessageType type(
      makeType<Position3D>("qv_msgs/msg/Position3D",
                           {{"x", &Position3D::x}, {"y", &Position3D::y}, {"z", &Position3D::z}}));
  return type;
}

const MessageType& MetricalData::getType() {
  static const MessageType type(makeType<MetricalData>(
      "qv_msgs/msg/MetricalData", {{"sensor_name", &MetricalData::sensor_name},
                                   {"family_name", &MetricalData::family_name},
                                   {"field_of_view", &MetricalData::field_of_view},
                                   {"sensor_transform", &MetricalData::sensor_transform},
                                   {"points", &MetricalData::points},
                                   {"cloud", &MetricalData::cloud},
                                   {"cloud_start", &MetricalData::cloud_start},
                                   {"cloud_count", &MetricalData::cloud_count},
                                   {"timestamp", &MetricalData::timestamp}}));
  return type;
}

const MessageType& ImagePoints::getType() {
  static const MessageType type(makeType<ImagePoints>(
      "qv_msgs/msg/ImagePoints", {{"image", &ImagePoints::image},
                                  {"image_time", &ImagePoints::image_time},
                                  {"width_by_depth", &ImagePoints::width_by_depth},
                                  {"height_by_depth", &ImagePoints::height_by_depth},
                                  {"skips", &ImagePoints::skips},
                                  {"lengths", &ImagePoints::lengths}}));
  return type;
}

const MessageType& Records::getType() {
  static const MessageType type(
      makeType<Records>("qv_msgs/msg/Records", {{"records", &Records::records}}));
  return type;
}

const MessageType& SensorState::getType() {
  static const MessageType type(makeType<SensorState>(
      "qv_msgs/msg/SensorState", {{"name", &SensorState::name},
                                  {"started", &SensorState::started},
                                  {"enabled", &SensorState::enabled},
                                  {"diagnosis", &SensorState::diagnosis},
                                  {"subscribers", &SensorState::subscribers}}));
  return type;
}

const MessageType& SensorStates::getType() {
  static const MessageType type(
      makeType<SensorStates>("qv_msgs/msg/SensorStates", {{"sensors", &SensorStates::sensors}}));
  return type;
}

const MessageType& Fault::getType() {
  static const MessageType type(makeType<Fault>("qv_msgs/msg/Fault", {{"sensor", &Fault::sensor},
                                                                      {"kind", &Fault::kind},
                                                                      {"start", &Fault::start},
                                                                      {"end", &Fault::end}}));
  return type;
}

const MessageType& Command::getType() {
  static const MessageType type(
      makeType<Command>("qv_msgs/msg/Command", {{"name", &Command::name},
                                                {"subscriber", &Command::subscriber},
                                                {"sensors", &Command::sensors},
                                                {"on", &Command::on},
                                                {"values", &Command::values}}));
  return type;
}

const MessageType& Inputs::getType() {
  static const MessageType type(
      makeType<Inputs>("qv_msgs/msg/Inputs", {{"stepped", &Inputs::stepped},
                                              {"velocity", &Inputs::velocity},
                                              {"new_keys", &Inputs::new_keys},
                                              {"keys", &Inputs::keys},
                                              {"raised", &Inputs::raised},
                                              {"types", &Inputs::types},
                                              {"numbers", &Inputs::numbers},
                                              {"texts", &Inputs::texts}}));
  return type;
}

}  // namespace qv_msgs

}  // namespace QV::ros2
