#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/api.h"

namespace QV::ros2 {

/** How far others are looked for, beyond the peers that are named. */
enum class DiscoveryRange { off, localhost, subnet };

/** In which of two layouts some messages travel. */
enum class RosDistro { humble, ironOrLater };

struct QV_API GraphOptions {
  int domain = 0;
  DiscoveryRange range = DiscoveryRange::localhost;
  RosDistro distro = RosDistro::ironOrLater;
  /** Whether the nodes' names are told; topics work without. */
  bool announcesNodes = true;
  /** Addresses. */
  std::vector<std::string> peers = {};
  /** Empty: that of the range. */
  std::string networkInterface = {};
  /** Full topic names, by those that they stand for. */
  std::map<std::string, std::string> remaps = {};
  /** Of the engine, as CYCLONEDDS_URI holds it; it goes before all that is here. */
  std::string configuration = {};
};

/**
 * As ROS_DOMAIN_ID, ROS_LOCALHOST_ONLY, ROS_AUTOMATIC_DISCOVERY_RANGE, ROS_STATIC_PEERS, ROS_DISTRO
 * and CYCLONEDDS_URI say. With none that speaks of the range, discovery stays on this machine. A
 * value that is none throws std::invalid_argument that names the variable.
 */
QV_API GraphOptions graphOptionsFromEnvironment();

/** Humble and older, or later; an empty or unknown one is taken for a later one. */
QV_API RosDistro parseDistro(const std::string& name);

}  // namespace QV::ros2
