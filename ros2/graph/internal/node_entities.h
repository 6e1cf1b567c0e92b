#pragma once

#include <array>
#include <string>
#include <vector>

#include "ros2/graph/graph.h"
#include "ros2/messages/message_type.h"

namespace QV::ros2 {

using Guid = std::array<std::uint8_t, 16>;

/** A node's readers and writers. */
struct NodeEntities {
  std::string nameSpace;
  std::string name;
  std::vector<Guid> readers;
  std::vector<Guid> writers;
};

/** The type that announces the nodes of a participant ("ros_discovery_info"). */
QV_API const MessageType& getNodesType(RosDistro distro);
QV_API Bytes encodeNodes(RosDistro distro, const Guid& participant,
                         const std::vector<const NodeEntities*>& nodes);

}  // namespace QV::ros2
