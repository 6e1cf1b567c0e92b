#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "ros2/bag/bag_reader.h"

namespace QV::ros2 {
namespace {

namespace fs = std::filesystem;

std::uint64_t bytesOf(const std::string& path) {
  if (!fs::is_directory(path)) return fs::file_size(path);
  std::uint64_t bytes = 0;
  for (const auto& entry : fs::directory_iterator(path))
    if (entry.is_regular_file()) bytes += entry.file_size();
  return bytes;
}

/** Counts messages as they come. */
class Census {
 public:
  void add(const BagMessage& message) {
    BagTopicInfo& topic = topics[message.topic];
    if (topic.count++ == 0) topic.startTime = topic.endTime = message.logTime;
    topic.bytes += message.data.size();
    topic.startTime = std::min(topic.startTime, message.logTime);
    if (message.logTime <= topic.endTime) return;
    topic.longestGap = std::max(topic.longestGap, message.logTime - topic.endTime);
    topic.endTime = message.logTime;
  }

  BagInfo finish(const std::string& path, const BagReader& reader) {
    BagInfo info;
    info.path = path;
    info.fileBytes = bytesOf(path);
    for (const BagTopic* const topic : reader.getTopics()) {
      BagTopicInfo& row = topics[topic];
      row.topic = *topic;
      const double seconds = 1e-9 * static_cast<double>(row.endTime - row.startTime);
      if (seconds > 0.0) row.rate = static_cast<double>(row.count - 1) / seconds;
      info.topics.push_back(row);
      if (row.count == 0) continue;
      info.startTime = info.count == 0 ? row.startTime : std::min(info.startTime, row.startTime);
      info.endTime = std::max(info.endTime, row.endTime);
      info.count += row.count;
    }
    info.metadata = reader.getMetadata();
    info.damage = reader.getDamage();
    return info;
  }

 private:
  std::map<const BagTopic*, BagTopicInfo> topics;
};

/** Numbers for the topics of a reader in a new file. */
class TopicCopies {
 public:
  explicit TopicCopies(BagWriter& writer) : writer(writer) {}

  std::uint16_t find(const BagTopic* topic) {
    const auto known = numbers.find(topic);
    if (known != numbers.end()) return known->second;
    return numbers[topic] = writer.addTopic(*topic);
  }

 private:
  BagWriter& writer;
  std::map<const BagTopic*, std::uint16_t> numbers;
};

}  // namespace

bool isFileOf(const std::string& path, const std::string& recording) {
  std::error_code ignored;
  if (fs::equivalent(path, recording, ignored)) return true;
  const fs::recursive_directory_iterator files(recording, ignored);
  return !ignored && std::any_of(begin(files), end(files), [&](const auto& file) {
    return fs::equivalent(path, file.path(), ignored);
  });
}

BagInfo readBagInfo(const std::string& path) {
  BagReader reader(path);
  Census census;
  while (const auto message = reader.next()) census.add(*message);
  reader.checkWhole();
  return census.finish(path, reader);
}

BagInfo recoverBag(const std::string& from, const std::string& to, const BagOptions& options) {
  if (isFileOf(to, from))
    throw std::invalid_argument(to + ": is the recording to recover; choose another output file");
  BagReader reader(from, BagOrder::file);
  BagWriter writer(to, options);
  TopicCopies copies(writer);
  Census census;
  for (const BagTopic* const topic : reader.getTopics()) copies.find(topic);
  while (const auto message = reader.next()) {
    census.add(*message);
    writer.write(copies.find(message->topic), message->logTime, message->publishTime,
                 message->data);
  }
  for (const auto& [name, values] : reader.getMetadata())
    if (name != "rosbag2") writer.addMetadata(name, values);
  for (std::size_t i = 0; i < reader.getAttachmentCount(); ++i)
    if (const auto attachment = reader.readAttachment(i)) writer.addAttachment(*attachment);
  writer.close();
  reader.checkWhole();
  return census.finish(from, reader);
}

}  // namespace QV::ros2
