#include <atomic>

#include "platform/ko/log.h"
#include "ros2/graph/internal/cdr_data.h"
#include "ros2/graph/internal/endpoints.h"
#include "ros2/graph/internal/listener.h"

namespace QV::ros2 {
namespace {

class DdsPublisher : public Publisher {
 public:
  DdsPublisher(const std::shared_ptr<SharedNode>& node, const GraphTopic& topic,
               const MessageType& type, OnMatch onMatch)
      : node(node),
        topic(topic),
        onMatch(std::move(onMatch)),
        ddsTopic(node->participant->makeTopic("rt" + topic.name, type)) {
    const Listener listener(this);
    dds_lset_publication_matched(listener.get(), xOnMatched);
    writer = Entity(checked(dds_create_writer(node->participant->get(), ddsTopic.entity.get(),
                                              qosOf(topic.qos, type).get(), listener.get()),
                            topic.name + " can't be published"));
    guid = guidOf(writer.get());
    node->participant->announce([&] { node->entities.writers.push_back(guid); });
  }
  ~DdsPublisher() override {
    node->participant->announce([&] { std::erase(node->entities.writers, guid); });
    // No listener is called after this reset.
    writer.reset();
  }

  const GraphTopic& getTopic() const override { return topic; }
  std::size_t getReaderCount() const override { return readers; }
  std::uint64_t getLostCount() const override { return lost; }

  void write(Bytes cdr) override {
    // Fast DDS notes four bytes in each fragment that it still expects, also in a last one of less.
    constexpr std::size_t kWord = 4;
    cdr.resize((cdr.size() + kWord - 1) / kWord * kWord);
    const auto result =
        dds_writecdr(writer.get(), new CdrData(ddsTopic.type.get(), SDK_DATA, std::move(cdr)));
    if (result < 0 && lost++ == 0)
      ko::log::warning("ROS2.Publisher", "write")
          << topic.name << ": a message could not be sent (further losses are only counted): "
          << dds_strretcode(-result);
  }

 private:
  static void xOnMatched(dds_entity_t, dds_publication_matched_status_t status, void* self) {
    auto& publisher = *static_cast<DdsPublisher*>(self);
    publisher.readers = status.current_count;
    if (publisher.onMatch)
      callSafely(publisher.topic.name, [&] { publisher.onMatch(status.current_count); });
  }

  const std::shared_ptr<SharedNode> node;
  const GraphTopic topic;
  const OnMatch onMatch;
  std::atomic<std::size_t> readers{0};
  std::atomic<std::uint64_t> lost{0};
  const Topic ddsTopic;
  Entity writer;
  Guid guid;
};

}  // namespace

std::unique_ptr<Publisher> makePublisher(const std::shared_ptr<SharedNode>& node,
                                         const GraphTopic& topic, const MessageType& type,
                                         OnMatch onMatch) {
  return std::make_unique<DdsPublisher>(node, topic, type, std::move(onMatch));
}

}  // namespace QV::ros2
