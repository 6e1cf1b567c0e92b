#include "ros2/graph/internal/node_entities.h"

#include <algorithm>

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {
namespace {

constexpr std::size_t kMostLetters = 256;

template <std::size_t size>
struct Gid {
  std::array<std::uint8_t, size> data{};

  static const MessageType& getType() {
    static const MessageType type(makeType<Gid>("rmw_dds_common/msg/Gid", {{"data", &Gid::data}}));
    return type;
  }
};

template <std::size_t size>
struct NodeInfo {
  std::string node_namespace;
  std::string node_name;
  std::vector<Gid<size>> reader_gid_seq;
  std::vector<Gid<size>> writer_gid_seq;

  static const MessageType& getType() {
    static const MessageType type(
        makeType<NodeInfo>("rmw_dds_common/msg/NodeEntitiesInfo",
                           {{"node_namespace", &NodeInfo::node_namespace, kMostLetters},
                            {"node_name", &NodeInfo::node_name, kMostLetters},
                            {"reader_gid_seq", &NodeInfo::reader_gid_seq},
                            {"writer_gid_seq", &NodeInfo::writer_gid_seq}}));
    return type;
  }
};

template <std::size_t size>
struct ParticipantInfo {
  Gid<size> gid;
  std::vector<NodeInfo<size>> node_entities_info_seq;

  static const MessageType& getType() {
    static const MessageType type(makeType<ParticipantInfo>(
        "rmw_dds_common/msg/ParticipantEntitiesInfo",
        {{"gid", &ParticipantInfo::gid},
         {"node_entities_info_seq", &ParticipantInfo::node_entities_info_seq}}));
    return type;
  }
};

template <std::size_t size>
Gid<size> gidOf(const Guid& guid) {
  Gid<size> gid;
  std::copy(guid.begin(), guid.end(), gid.data.begin());
  return gid;
}

template <std::size_t size>
std::vector<Gid<size>> gidsOf(const std::vector<Guid>& guids) {
  std::vector<Gid<size>> gids;
  gids.reserve(guids.size());
  for (const Guid& guid : guids) gids.push_back(gidOf<size>(guid));
  return gids;
}

template <std::size_t size>
Bytes encode(const Guid& participant, const std::vector<const NodeEntities*>& nodes) {
  ParticipantInfo<size> info{gidOf<size>(participant), {}};
  for (const NodeEntities* const node : nodes)
    info.node_entities_info_seq.push_back(
        {node->nameSpace, node->name, gidsOf<size>(node->readers), gidsOf<size>(node->writers)});
  return toCdr(info);
}

}  // namespace

const MessageType& getNodesType(RosDistro distro) {
  if (distro == RosDistro::humble) return ParticipantInfo<24>::getType();
  return ParticipantInfo<16>::getType();
}

Bytes encodeNodes(RosDistro distro, const Guid& participant,
                  const std::vector<const NodeEntities*>& nodes) {
  if (distro == RosDistro::humble) return encode<24>(participant, nodes);
  return encode<16>(participant, nodes);
}

}  // namespace QV::ros2
