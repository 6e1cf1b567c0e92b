#include "ros2/bag/bag_writer.h"

#include <algorithm>
#include <stdexcept>

#include "platform/ko/log.h"
#include "ros2/bag/internal/bag_metadata.h"
#include "ros2/bag/internal/chunk_builder.h"
#include "ros2/bag/internal/mcap_summary_writer.h"

namespace QV::ros2 {
namespace {

constexpr std::size_t kMostTopics = 65'535;

}  // namespace

BagTopic makeBagTopic(const std::string& name, const MessageType& type, const Qos& qos) {
  return {name,
          type.getName(),
          "cdr",
          "ros2msg",
          type.getSchema(),
          {{"offered_qos_profiles", qosTextOf(qos)}, {"topic_type_hash", type.getHash()}}};
}

class BagWriter::Impl {
 public:
  Impl(const std::string& path, const BagOptions& options)
      : file(path), chunk(options), summary(path) {
    Bytes bytes(mcap::kMagic.begin(), mcap::kMagic.end());
    mcap::appendHeader(bytes, "ros2", "qv");
    file.write(bytes);
    addMetadata({"rosbag2", {{"serialized_metadata", metadataTextOf({}, summary.statistics)}}});
  }

  void addTopic(const BagTopic& topic) {
    Bytes bytes;
    const auto id = static_cast<std::uint16_t>(topics.size());
    const std::uint16_t schemaId = topic.schemaEncoding.empty() ? 0 : xAddSchema(topic, bytes);
    summary.channels.push_back({id, schemaId, topic.name, topic.encoding, topic.metadata});
    append(bytes, summary.channels.back());
    topics.push_back(topic);
    counts.push_back(0);
    file.write(bytes);
  }

  void write(const mcap::Message& message) {
    ++counts[message.channelId];
    mcap::Statistics& statistics = summary.statistics;
    if (statistics.messageCount++ == 0) statistics.startTime = statistics.endTime = message.logTime;
    statistics.startTime = std::min(statistics.startTime, message.logTime);
    statistics.endTime = std::max(statistics.endTime, message.logTime);
    if (chunk.isFull(message.data.size(), message.logTime)) flush();
    chunk.add(message);
  }

  void addMetadata(const mcap::Metadata& metadata) {
    Bytes bytes;
    append(bytes, metadata);
    summary.metadata.push_back({file.getSize(), bytes.size(), metadata.name});
    file.write(bytes);
  }

  void addAttachment(const BagAttachment& attachment) {
    Bytes bytes;
    mcap::append(bytes, attachment);
    summary.attachments.push_back({file.getSize(), bytes.size(), attachment.logTime,
                                   attachment.createTime, attachment.data.size(), attachment.name,
                                   attachment.mediaType});
    file.write(bytes);
  }

  void flush() {
    if (chunk.isEmpty()) return;
    Bytes index;
    append(index, chunk.write(file));
    summary.chunks.append(index);
    ++summary.statistics.chunkCount;
  }

  void close() {
    flush();
    xCount();
    addMetadata({"rosbag2", {{"serialized_metadata", metadataTextOf(topics, summary.statistics)}}});
    summary.statistics.metadataCount = static_cast<std::uint32_t>(summary.metadata.size());
    writeSummary(file, summary);
  }

  std::uint64_t getSize() const { return file.getSize(); }

 private:
  std::uint16_t xAddSchema(const BagTopic& topic, Bytes& bytes) {
    mcap::Schema schema{0, topic.type, topic.schemaEncoding, topic.schema};
    for (const auto& known : summary.schemas) {
      schema.id = known.id;
      if (schema == known) return known.id;
    }
    schema.id = static_cast<std::uint16_t>(summary.schemas.size() + 1);
    append(bytes, schema);
    summary.schemas.push_back(schema);
    return schema.id;
  }

  void xCount() {
    mcap::Statistics& statistics = summary.statistics;
    statistics.schemaCount = static_cast<std::uint16_t>(summary.schemas.size());
    statistics.channelCount = static_cast<std::uint32_t>(summary.channels.size());
    statistics.attachmentCount = static_cast<std::uint32_t>(summary.attachments.size());
    for (std::size_t i = 0; i < counts.size(); ++i)
      statistics.channelCounts[static_cast<std::uint16_t>(i)] = counts[i];
  }

  OutputFile file;
  ChunkBuilder chunk;
  std::vector<BagTopic> topics;
  std::vector<std::uint64_t> counts;
  McapSummary summary;
};

BagWriter::BagWriter(const std::string& path, const BagOptions& options)
    : impl(std::make_unique<Impl>(path, options)), size(impl->getSize()) {}

BagWriter::~BagWriter() {
  try {
    close();
  } catch (const std::exception& error) {
    ko::log::error("ROS2.BagWriter", "close") << error.what();
  }
}

template <typename Call>
void BagWriter::xAttempt(const Call& call) {
  if (!impl) return;
  try {
    call(*impl);
    size = impl->getSize();
  } catch (...) {
    impl.reset();
    throw;
  }
}

std::uint16_t BagWriter::addTopic(const BagTopic& topic) {
  if (topicCount == kMostTopics) throw std::length_error("more than 65,535 topics");
  xAttempt([&](Impl& open) { open.addTopic(topic); });
  return topicCount++;
}

void BagWriter::write(std::uint16_t topic, std::uint64_t logTime, std::uint64_t publishTime,
                      BytesView data) {
  if (topic >= topicCount) throw std::out_of_range("no topic " + std::to_string(topic));
  xAttempt([&](Impl& open) { open.write({topic, 0, logTime, publishTime, data}); });
}

void BagWriter::addMetadata(const std::string& name,
                            const std::map<std::string, std::string>& values) {
  xAttempt([&](Impl& open) { open.addMetadata({name, values}); });
}

void BagWriter::addAttachment(const BagAttachment& attachment) {
  xAttempt([&](Impl& open) { open.addAttachment(attachment); });
}

void BagWriter::flush() {
  xAttempt([](Impl& open) { open.flush(); });
}

void BagWriter::close() {
  xAttempt([](Impl& open) { open.close(); });
  impl.reset();
}

}  // namespace QV::ros2
