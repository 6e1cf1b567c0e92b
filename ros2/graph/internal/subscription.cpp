#include <array>
#include <atomic>

#include "ros2/graph/internal/cdr_data.h"
#include "ros2/graph/internal/endpoints.h"
#include "ros2/graph/internal/listener.h"

namespace QV::ros2 {
namespace {

class DdsSubscription : public Subscription {
 public:
  DdsSubscription(const std::shared_ptr<SharedNode>& node, const GraphTopic& topic,
                  const MessageType& type, OnMessage onMessage, OnMatch onMatch)
      : node(node),
        topic(topic),
        onMessage(std::move(onMessage)),
        onMatch(std::move(onMatch)),
        ddsTopic(node->participant->makeTopic("rt" + topic.name, type)) {
    const Listener listener(this);
    dds_lset_data_available(listener.get(), xOnData);
    dds_lset_subscription_matched(listener.get(), xOnMatched);
    reader = Entity(checked(dds_create_reader(node->participant->get(), ddsTopic.entity.get(),
                                              qosOf(topic.qos, type).get(), listener.get()),
                            topic.name + " can't be subscribed to"));
    guid = guidOf(reader.get());
    node->participant->announce([&] { node->entities.readers.push_back(guid); });
  }
  ~DdsSubscription() override {
    node->participant->announce([&] { std::erase(node->entities.readers, guid); });
    // No listener is called after this reset.
    reader.reset();
  }

  const GraphTopic& getTopic() const override { return topic; }
  std::size_t getWriterCount() const override { return writers; }

 private:
  static constexpr std::size_t kAtOnce = 16;

  static void xOnMatched(dds_entity_t, dds_subscription_matched_status_t status, void* self) {
    auto& subscription = *static_cast<DdsSubscription*>(self);
    subscription.writers = status.current_count;
    if (subscription.onMatch)
      callSafely(subscription.topic.name, [&] { subscription.onMatch(status.current_count); });
  }

  static void xOnData(dds_entity_t reader, void* self) {
    std::array<ddsi_serdata*, kAtOnce> messages{};
    std::array<dds_sample_info_t, kAtOnce> infos{};
    dds_return_t count = 0;
    do {
      count = dds_takecdr(reader, messages.data(), kAtOnce, infos.data(), DDS_ANY_STATE);
      for (std::size_t i = 0; static_cast<dds_return_t>(i) < count; ++i) {
        static_cast<DdsSubscription*>(self)->xTake(*messages[i], infos[i]);
        ddsi_serdata_unref(messages[i]);
      }
    } while (count == static_cast<dds_return_t>(kAtOnce));
  }

  void xTake(const ddsi_serdata& data, const dds_sample_info_t& info) const {
    if (!info.valid_data) return;
    const auto& cdr = static_cast<const CdrData&>(data);
    const ReceivedMessage message{BytesView(cdr.bytes).first(cdr.size), info.source_timestamp};
    callSafely(topic.name, [&] { onMessage(message); });
  }

  const std::shared_ptr<SharedNode> node;
  const GraphTopic topic;
  const OnMessage onMessage;
  const OnMatch onMatch;
  std::atomic<std::size_t> writers{0};
  const Topic ddsTopic;
  Entity reader;
  Guid guid;
};

}  // namespace

std::unique_ptr<Subscription> makeSubscription(const std::shared_ptr<SharedNode>& node,
                                               const GraphTopic& topic, const MessageType& type,
                                               OnMessage onMessage, OnMatch onMatch) {
  return std::make_unique<DdsSubscription>(node, topic, type, std::move(onMessage),
                                           std::move(onMatch));
}

}  // namespace QV::ros2
