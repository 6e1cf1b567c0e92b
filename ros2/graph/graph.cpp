#include "ros2/graph/graph.h"

#include <algorithm>
#include <set>

#include "ros2/graph/internal/endpoints.h"
#include "ros2/graph/internal/names.h"

namespace QV::ros2 {
namespace {

class DdsNode : public GraphNode {
 public:
  explicit DdsNode(std::shared_ptr<SharedNode> node) : node(std::move(node)) {}

  std::unique_ptr<Publisher> publish(const std::string& topic, const MessageType& type,
                                     const Qos& qos, OnMatch onMatch) override {
    return makePublisher(node, {resolve(topic), type.getName(), qos}, type, std::move(onMatch));
  }

  std::unique_ptr<Subscription> subscribe(const std::string& topic, const MessageType& type,
                                          const Qos& qos, OnMessage onMessage,
                                          OnMatch onMatch) override {
    return makeSubscription(node, {resolve(topic), type.getName(), qos}, type, std::move(onMessage),
                            std::move(onMatch));
  }

  std::string resolve(const std::string& topic) const override {
    const NodeEntities& names = node->entities;
    const std::string full = expandTopic(topic, names.nameSpace, names.name);
    const auto to = node->participant->remap(full);
    return to ? expandTopic(*to, names.nameSpace, names.name) : full;
  }

 private:
  const std::shared_ptr<SharedNode> node;
};

/** The builtin topic's messages, lent by the engine. */
template <typename Visit>
void visitPublications(dds_entity_t reader, const Visit& visit) {
  constexpr std::size_t kAtOnce = 64;
  dds_return_t count = 0;
  do {
    void* samples[kAtOnce] = {};
    dds_sample_info_t infos[kAtOnce];
    count = dds_take(reader, samples, infos, kAtOnce, kAtOnce);
    for (std::size_t i = 0; static_cast<dds_return_t>(i) < count; ++i)
      if (infos[i].valid_data) visit(*static_cast<const dds_builtintopic_endpoint_t*>(samples[i]));
    if (count > 0) dds_return_loan(reader, samples, count);
  } while (count == static_cast<dds_return_t>(kAtOnce));
}

}  // namespace

Graph::Graph(const GraphOptions& options) : participant(std::make_shared<Participant>(options)) {}

Graph::~Graph() = default;

std::unique_ptr<GraphNode> Graph::createNode(const std::string& name,
                                             const std::string& nameSpace) {
  checkNode(name, nameSpace);
  return std::make_unique<DdsNode>(
      std::make_shared<SharedNode>(participant, NodeEntities{nameSpace, name, {}, {}}));
}

RosDistro Graph::getDistro() const {
  return participant->getOptions().distro;
}

std::vector<GraphTopic> Graph::findTopics() const {
  const Entity reader(checked(
      dds_create_reader(participant->get(), DDS_BUILTIN_TOPIC_DCPSPUBLICATION, nullptr, nullptr),
      "topics can't be looked for"));
  const Guid own = guidOf(participant->get());
  std::set<GraphTopic> topics;
  visitPublications(reader.get(), [&](const dds_builtintopic_endpoint_t& publication) {
    const auto name = topicOfDds(publication.topic_name);
    const auto type = typeOfDds(publication.type_name);
    const auto& guid = publication.participant_key.v;
    if (name && type && !std::equal(own.begin(), own.end(), std::begin(guid)))
      topics.insert({*name, *type, qosFrom(publication.qos)});
  });
  return {topics.begin(), topics.end()};
}

std::vector<std::string> Graph::findUnusedRemaps() const {
  return participant->findUnusedRemaps();
}

}  // namespace QV::ros2
