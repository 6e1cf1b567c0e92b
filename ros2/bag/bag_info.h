#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ros2/bag/bag_reader.h"

namespace QV::ros2 {

/** Times are nanoseconds, by the log. */
struct BagTopicInfo {
  BagTopic topic;
  std::uint64_t count = 0;
  /** Of all its messages. */
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
  /** Of the file or files. */
  std::uint64_t fileBytes = 0;
  std::uint64_t count = 0;
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  /** By name. */
  std::vector<BagTopicInfo> topics;
  std::vector<BagMetadata> metadata;
  BagDamage damage;
};

/** Reads the whole recording, so that nothing of it is only promised. Errors as of BagReader. */
QV_API BagInfo readBagInfo(const std::string& path);

/**
 * Writes everything that can be read of `from`, cut or damaged, to a new file with an index. The
 * same file for both: std::invalid_argument. Gives what was read and what was not.
 */
QV_API BagInfo recoverBag(const std::string& from, const std::string& to,
                          const BagOptions& options = {});

}  // namespace QV::ros2
