#include "ros2/graph/internal/participant.h"

#include <algorithm>
#include <atomic>
#include <net/if.h>
#include <stdexcept>

#include "platform/ko/log.h"
#include "ros2/graph/internal/cdr_data.h"
#include "ros2/graph/internal/domain_settings.h"

namespace QV::ros2 {
namespace {

constexpr dds_duration_t kLongestWrite = DDS_MSECS(100);
constexpr Qos kNodesQos{true, true, 1};
/** The engine has the same error for all that keeps a domain from being made. */
constexpr char kOrNoRoom[] =
    "; or too many programs of this machine are on the domain: CYCLONEDDS_URI can raise "
    "Discovery/MaxAutoParticipantIndex";

void checkInterface(const GraphOptions& options) {
  const std::string& name = options.networkInterface;
  if (!name.empty() && options.configuration.empty() && if_nametoindex(name.c_str()) == 0)
    throw std::invalid_argument("a network interface of this machine expected, \"" + name +
                                "\" given");
}

/**
 * Makes a domain. Whoever else uses the engine in this process may have taken it: ours then has a
 * number of its own in here, and the same on the network.
 */
dds_entity_t makeDomain(const GraphOptions& options) {
  checkInterface(options);
  static std::atomic<dds_domainid_t> following{1'000'000};
  const std::string settings = settingsOf(options);
  auto result = dds_create_domain(static_cast<dds_domainid_t>(options.domain), settings.c_str());
  if (result == DDS_RETCODE_PRECONDITION_NOT_MET)
    result = dds_create_domain(following++, settings.c_str());
  if (!options.configuration.empty())
    return checked(result, "a configuration of Cyclone DDS in CYCLONEDDS_URI expected, \"" +
                               options.configuration + "\" given" + kOrNoRoom);
  if (result < 0 && !options.networkInterface.empty())
    throw std::invalid_argument("a network interface that is up expected, \"" +
                                options.networkInterface + "\" given" + kOrNoRoom);
  return checked(result,
                 std::string("a network interface that is up expected, none found") + kOrNoRoom);
}

}  // namespace

QosPtr qosOf(const Qos& qos, const MessageType& type) {
  QosPtr result(dds_create_qos());
  dds_qset_reliability(result.get(),
                       qos.reliable ? DDS_RELIABILITY_RELIABLE : DDS_RELIABILITY_BEST_EFFORT,
                       kLongestWrite);
  dds_qset_history(result.get(), DDS_HISTORY_KEEP_LAST, qos.depth);
  dds_qset_durability(
      result.get(), qos.transientLocal ? DDS_DURABILITY_TRANSIENT_LOCAL : DDS_DURABILITY_VOLATILE);
  if (qos.transientLocal)
    dds_qset_durability_service(result.get(), 0, DDS_HISTORY_KEEP_LAST, qos.depth,
                                DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED);
  dds_qset_writer_data_lifecycle(result.get(), false);
  const std::string hash = "typehash=" + type.getHash() + ";";
  dds_qset_userdata(result.get(), hash.data(), hash.size());
  return result;
}

Qos qosFrom(const dds_qos_t* qos) {
  dds_reliability_kind_t reliability = DDS_RELIABILITY_RELIABLE;
  dds_durability_kind_t durability = DDS_DURABILITY_VOLATILE;
  dds_history_kind_t history = DDS_HISTORY_KEEP_LAST;
  Qos result;
  dds_qget_reliability(qos, &reliability, nullptr);
  dds_qget_durability(qos, &durability);
  dds_qget_history(qos, &history, &result.depth);
  result.reliable = reliability == DDS_RELIABILITY_RELIABLE;
  result.transientLocal = durability != DDS_DURABILITY_VOLATILE;
  return result;
}

Participant::Participant(const GraphOptions& options)
    : options(options),
      domain(makeDomain(options)),
      arrival(domain.get(), options.range != DiscoveryRange::off) {
  if (!options.announcesNodes) return;
  const MessageType& type = getNodesType(options.distro);
  nodesTopic = makeTopic("ros_discovery_info", type);
  nodesWriter = Entity(checked(
      dds_create_writer(get(), nodesTopic.entity.get(), qosOf(kNodesQos, type).get(), nullptr),
      "nodes can't be announced"));
}

Participant::~Participant() {
  nodes.clear();
  xAnnounce();
}

Topic Participant::makeTopic(const std::string& ddsName, const MessageType& type) const {
  ddsi_sertype* cdrType = makeCdrType(type.getDdsName());
  const auto result =
      dds_create_topic_sertype(get(), ddsName.c_str(), &cdrType, nullptr, nullptr, nullptr);
  if (result < 0) ddsi_sertype_unref(cdrType);
  Entity entity(checked(result, "topic " + ddsName + " can't be made"));
  return {std::move(entity), {ddsi_sertype_ref(cdrType), TypeUnref()}};
}

std::optional<std::string> Participant::remap(const std::string& topic) {
  const auto found = options.remaps.find(topic);
  if (found == options.remaps.end()) return std::nullopt;
  const std::lock_guard lock(mutex);
  remapped.insert(topic);
  return found->second;
}

std::vector<std::string> Participant::findUnusedRemaps() {
  const std::lock_guard lock(mutex);
  std::vector<std::string> unused;
  for (const auto& [from, to] : options.remaps)
    if (remapped.count(from) == 0) unused.push_back(from);
  return unused;
}

void Participant::xAnnounce() {
  if (nodesWriter.get() == 0) return;
  Bytes cdr = encodeNodes(options.distro, guidOf(get()), {nodes.begin(), nodes.end()});
  const auto result =
      dds_writecdr(nodesWriter.get(), new CdrData(nodesTopic.type.get(), SDK_DATA, std::move(cdr)));
  if (result < 0)
    ko::log::warning("ROS2.Graph", "announce")
        << "can't announce the node names: " << dds_strretcode(-result);
}

}  // namespace QV::ros2
