#pragma once

#include <optional>
#include <string>

namespace QV::ros2 {

/** "/robot1/scan" of "scan" in "/robot1"; std::invalid_argument for a name that is none. */
std::string expandTopic(const std::string& topic, const std::string& nameSpace,
                        const std::string& node);
/** std::invalid_argument for one that is none. */
void checkNode(const std::string& name, const std::string& nameSpace);

/** Returns "/scan" for "rt/scan"; std::nullopt if it is no topic of ROS. */
std::optional<std::string> topicOfDds(const std::string& name);
/** Returns "sensor_msgs/msg/LaserScan" for "sensor_msgs::msg::dds_::LaserScan_"; std::nullopt if it
 * is no type of ROS. */
std::optional<std::string> typeOfDds(const std::string& name);

}  // namespace QV::ros2
