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
  /** Valid until the next call of next(). */
  BytesView data;
};

struct BagMetadata {
  std::string name;
  std::map<std::string, std::string> values;
};

/** The damage of a recording. Above 10,000 places the counts are lower bounds. */
struct BagDamage {
  std::uint64_t chunks = 0;
  std::uint64_t messages = 0;
  /** The damaged places, with the reason; only the first kMostLines. */
  std::vector<std::string> lines;

  static constexpr std::size_t kMostLines = 20;
};

struct BagTimes {
  std::uint64_t start = 0;
  std::uint64_t end = 0;
};

/** The order of messages: by log time, or the order in the file, which is faster. */
enum class BagOrder { time, file };

/**
 * Reads the messages of an MCAP file, with or without an index, whole, cut or damaged; of a SQLite
 * file of rosbag2; or of a folder with its metadata.yaml. It skips and
 * counts damaged parts. Memory is bounded, whatever the file says. Use it on one thread at a time.
 * Not copyable.
 */
class QV_API BagReader {
 public:
  /** Opens a recording. Throws std::runtime_error with file and byte if it is no recording or can't
   * be opened. */
  explicit BagReader(const std::string& path, BagOrder order = BagOrder::time);
  ~BagReader();
  BagReader(const BagReader&) = delete;
  BagReader& operator=(const BagReader&) = delete;

  /** Returns the topics by name; reading an MCAP file may find more. The pointers are valid as long
   * as the reader. */
  std::vector<const BagTopic*> getTopics() const;
  const std::vector<BagMetadata>& getMetadata() const;

  std::size_t getAttachmentCount() const;
  /** Returns the attachment; std::nullopt if it is damaged. */
  std::optional<BagAttachment> readAttachment(std::size_t index);

  /** Returns the number of messages of a topic, by the index; std::nullopt without one. */
  std::optional<std::uint64_t> getCount(const std::string& topic) const;

  /** Returns the log times of the first and the last message, by the index if there is one; 0
   * without messages. */
  BagTimes getTimes() const;

  /** Returns the next message; std::nullopt at the end. */
  std::optional<BagMessage> next();
  /** Goes on with the first message whose log time is `logTime` or later. Needs BagOrder::time. */
  void seek(std::uint64_t logTime);

  /** Reads the whole file once more to check the CRC over all of it, if it has one. */
  void checkWhole();

  /** Returns the damage found so far. */
  const BagDamage& getDamage() const;

 private:
  std::unique_ptr<class BagFile> file;
};

/** The figures of a topic. Times are log times in nanoseconds. */
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

/** True if `path` is `recording`, or a file in its folder: writing it would destroy the recording.
 */
QV_API bool isFileOf(const std::string& path, const std::string& recording);

/** Reads the whole recording, so all figures are counted. Throws as BagReader does. */
QV_API BagInfo readBagInfo(const std::string& path);

/**
 * Writes all readable messages of `from`, cut or damaged, to a new file with an index. Returns what
 * was read, and the damage. Throws std::invalid_argument if `to` is a file of `from`.
 */
QV_API BagInfo recoverBag(const std::string& from, const std::string& to,
                          const BagOptions& options = {});

}  // namespace QV::ros2
