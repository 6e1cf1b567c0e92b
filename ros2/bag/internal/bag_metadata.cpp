#include "ros2/bag/internal/bag_metadata.h"

#include <sstream>

namespace QV::ros2 {
namespace {

/** The last version that writes numbers in qualities of service. */
constexpr int kVersion = 8;

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char letter : text) {
    if (letter == '\n') {
      result += "\\n";
      continue;
    }
    if (letter == '"' || letter == '\\') result += '\\';
    result += letter;
  }
  return result + '"';
}

std::string valueOf(const BagTopic& topic, const char* key) {
  const auto found = topic.metadata.find(key);
  return found == topic.metadata.end() ? "" : found->second;
}

void writeTopic(std::ostream& yaml, const BagTopic& topic, std::uint64_t count) {
  yaml << "    - topic_metadata:\n"
       << "        name: " << quoted(topic.name) << "\n"
       << "        type: " << quoted(topic.type) << "\n"
       << "        serialization_format: " << quoted(topic.encoding) << "\n"
       << "        offered_qos_profiles: " << quoted(valueOf(topic, "offered_qos_profiles")) << "\n"
       << "        type_description_hash: " << quoted(valueOf(topic, "topic_type_hash")) << "\n"
       << "      message_count: " << count << "\n";
}

}  // namespace

std::string qosTextOf(const Qos& qos) {
  const std::string never = "    sec: 9223372036\n    nsec: 854775807\n";
  return "- history: 3\n  depth: 0\n  reliability: " + std::string(qos.reliable ? "1" : "2") +
         "\n  durability: " + (qos.transientLocal ? "1" : "2") + "\n  deadline:\n" + never +
         "  lifespan:\n" + never + "  liveliness: 1\n  liveliness_lease_duration:\n" + never +
         "  avoid_ros_namespace_conventions: false";
}

std::string metadataTextOf(const std::vector<BagTopic>& topics,
                           const mcap::Statistics& statistics) {
  std::ostringstream yaml;
  yaml.imbue(std::locale::classic());
  yaml << "rosbag2_bagfile_information:\n"
       << "  version: " << kVersion << "\n"
       << "  storage_identifier: mcap\n"
       << "  duration:\n    nanoseconds: " << statistics.endTime - statistics.startTime << "\n"
       << "  starting_time:\n    nanoseconds_since_epoch: " << statistics.startTime << "\n"
       << "  message_count: " << statistics.messageCount << "\n"
       << "  topics_with_message_count:" << (topics.empty() ? " []\n" : "\n");
  for (std::size_t i = 0; i < topics.size(); ++i) {
    const auto found = statistics.channelCounts.find(static_cast<std::uint16_t>(i));
    writeTopic(yaml, topics[i], found == statistics.channelCounts.end() ? 0 : found->second);
  }
  yaml << "  compression_format: \"\"\n  compression_mode: \"\"\n  relative_file_paths: []\n"
       << "  files: []\n  custom_data: ~\n  ros_distro: \"\"\n";
  return yaml.str();
}

}  // namespace QV::ros2
