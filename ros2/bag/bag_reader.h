#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ros2/bag/bag_writer.h"

namespace QV::ros2 {

struct BagMessage {
  const BagTopic* topic = nullptr;
  /** Nanoseconds. */
  std::uint64_t logTime = 0;
  std::uint64_t publishTime = 0;
  /** Good until the next one is read. */
  BytesView data;
};

struct BagMetadata {
  std::string name;
  std::map<std::string, std::string> values;
};

/** The damage of a recording; where more than 10,000 places are damaged, at least so much. */
struct BagDamage {
  std::uint64_t chunks = 0;
  std::uint64_t messages = 0;
  /** The places and faults; only the first kMostLines. */
  std::vector<std::string> lines;

  static constexpr std::size_t kMostLines = 20;
};

struct BagTimes {
  std::uint64_t start = 0;
  std::uint64_t end = 0;
};

/** The order of messages: by log time; or as they stand, where times don't matter. */
enum class BagOrder { time, file };

/**
 * Reads the messages of an MCAP file, with or without an index, whole, cut or damaged; of a SQLite
 * file of rosbag2; or of a folder with its metadata.yaml. What is damaged is skipped and counted.
 * Memory is bounded, whatever the file says. Used by one thread at a time. Not copyable.
 */
class QV_API BagReader {
 public:
  /** Opens a recording. What is none, or can't be opened: std::runtime_error that names file and
   * byte. */
  explicit BagReader(const std::string& path, BagOrder order = BagOrder::time);
  ~BagReader();
  BagReader(const BagReader&) = delete;
  BagReader& operator=(const BagReader&) = delete;

  /** Returns the topics by name; more of them may come to light while an MCAP file is read. They
   * last as long as this. */
  std::vector<const BagTopic*> getTopics() const;
  const std::vector<BagMetadata>& getMetadata() const;

  std::size_t getAttachmentCount() const;
  /** Nothing for one that is damaged. */
  std::optional<BagAttachment> readAttachment(std::size_t index);

  /** Returns how many messages the index says that a topic has, read or not; nothing without
   * one. */
  std::optional<std::uint64_t> getCount(const std::string& topic) const;

  /** Log times of the first and the last message, by the index if there is one; 0 if none. */
  BagTimes getTimes() const;

  /** Nothing at the end. */
  std::optional<BagMessage> next();
  /** Goes on with the first message whose log time is `logTime` or later. Needs BagOrder::time. */
  void seek(std::uint64_t logTime);

  /** Reads the whole file once more to check the CRC over all of it, if it has one. */
  void checkWhole();

  /** Found so far. */
  const BagDamage& getDamage() const;

 private:
  std::unique_ptr<class BagFile> file;
};

/** Times are nanoseconds, by the log. */
struct BagTopicInfo {
  BagTopic topic;
  std::uint64_t count = 0;
  /** The bytes of all its messages. */
  std::uint64_t bytes = 0;
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  /** The longest time between two messages. */
  std::uint64_t longestGap = 0;
  /** Messages a second; 0 if there is no time between them. */
  double rate = 0.0;
};

struct BagInfo {
  std::string path;
  /** The bytes of the file or files. */
  std::uint64_t fileBytes = 0;
  std::uint64_t count = 0;
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  /** The topics by name. */
  std::vector<BagTopicInfo> topics;
  std::vector<BagMetadata> metadata;
  BagDamage damage;
};

/** True if a file is a recording, or lies in the folder that is one: who writes it loses that. */
QV_API bool isFileOf(const std::string& path, const std::string& recording);

/** Reads the whole recording, so that nothing of it is only promised. Errors as of BagReader. */
QV_API BagInfo readBagInfo(const std::string& path);

/**
 * Writes everything that can be read of `from`, cut or damaged, to a new file with an index. A
 * file of `from` itself: std::invalid_argument. Gives what was read and what was not.
 */
QV_API BagInfo recoverBag(const std::string& from, const std::string& to,
                          const BagOptions& options = {});

}  // namespace QV::ros2
