#include "apps/ros2/graph_words.h"

namespace QV::app {
namespace {

std::string rangeText(const ros2::GraphOptions& options) {
  const bool isConfigured = !options.configuration.empty();
  if (isConfigured && options.range != ros2::DiscoveryRange::off)
    return "visible as CYCLONEDDS_URI says";
  switch (options.range) {
    case ros2::DiscoveryRange::off:
      return std::string("seen by nobody (ROS_AUTOMATIC_DISCOVERY_RANGE=OFF)") +
             (isConfigured ? ", unless CYCLONEDDS_URI says otherwise" : "");
    case ros2::DiscoveryRange::localhost:
      if (!options.peers.empty()) return "announced on this machine and to ROS_STATIC_PEERS";
      return "announced on this machine only (ROS_AUTOMATIC_DISCOVERY_RANGE=SUBNET without "
             "ROS_LOCALHOST_ONLY: in the network)";
    case ros2::DiscoveryRange::subnet:
      break;
  }
  return "visible in the network";
}

std::string layoutText(const ros2::GraphOptions& options) {
  const std::string layout =
      std::string("message layout: ") +
      (options.distro == ros2::RosDistro::humble ? "Humble and older" : "Iron and newer");
  return options.announcesNodes ? layout : layout + ", no node announced";
}

}  // namespace

void setGraph(ros2::GraphOptions& options, const JoinArguments& arguments) {
  options.announcesNodes = arguments.distro != "none";
  if (options.announcesNodes && !arguments.distro.empty())
    options.distro = ros2::parseDistro(arguments.distro);
  options.networkInterface = arguments.networkInterface;
}

std::string describeGraph(const ros2::GraphOptions& options) {
  return "ROS 2 domain " + std::to_string(options.domain) + ", " + rangeText(options) + ", " +
         layoutText(options);
}

}  // namespace QV::app
