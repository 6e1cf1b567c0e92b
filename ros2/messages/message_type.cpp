#include "ros2/messages/message_type.h"

#include <algorithm>

#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/internal/cdr_reader.h"
#include "ros2/messages/internal/cdr_writer.h"
#include "ros2/messages/internal/type_text.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"

namespace QV::ros2 {
namespace {

template <typename... Messages>
std::vector<const MessageType*> typesByName() {
  std::vector<const MessageType*> types = {&Messages::getType()...};
  std::sort(types.begin(), types.end(),
            [](const auto* a, const auto* b) { return a->getName() < b->getName(); });
  return types;
}

}  // namespace

MessageType::MessageType(std::unique_ptr<const MessageLayout> layout)
    : layout(std::move(layout)),
      ddsName(ddsNameOf(this->layout->name)),
      schema(schemaOf(*this->layout)),
      hash(hashOf(*this->layout)) {}

MessageType::~MessageType() = default;

const std::string& MessageType::getName() const {
  return layout->name;
}

void MessageType::encode(const void* message, Bytes& cdr) const {
  CdrWriter(cdr).write(*layout, static_cast<const std::uint8_t*>(message));
}

void MessageType::decode(BytesView cdr, void* message) const {
  CdrReader reader(cdr, layout->name);
  reader.read(*layout, static_cast<std::uint8_t*>(message));
  reader.expectEnd();
}

const std::vector<const MessageType*>& getMessageTypes() {
  static const auto types = typesByName<
      std_msgs::String, rosgraph_msgs::Clock, geometry_msgs::Pose, geometry_msgs::PoseStamped,
      geometry_msgs::PoseWithCovarianceStamped, geometry_msgs::Point,
      geometry_msgs::TransformStamped, geometry_msgs::Twist, geometry_msgs::TwistStamped,
      tf2_msgs::TFMessage, sensor_msgs::LaserScan, sensor_msgs::Range, sensor_msgs::PointCloud2,
      sensor_msgs::Image, sensor_msgs::CameraInfo, sensor_msgs::JointState, nav_msgs::Odometry,
      nav_msgs::OccupancyGrid, nav_msgs::Path, visualization_msgs::Marker,
      visualization_msgs::MarkerArray, vision_msgs::Detection3DArray,
      diagnostic_msgs::DiagnosticArray, rcl_interfaces::Log, qv_msgs::Records, qv_msgs::ImagePoints,
      qv_msgs::SensorStates, qv_msgs::Fault, qv_msgs::Command, qv_msgs::Inputs>();
  return types;
}

const MessageType* findMessageType(const std::string& name) {
  const auto& types = getMessageTypes();
  const auto found = std::find_if(types.begin(), types.end(),
                                  [&](const auto* type) { return type->getName() == name; });
  return found == types.end() ? nullptr : *found;
}

}  // namespace QV::ros2
