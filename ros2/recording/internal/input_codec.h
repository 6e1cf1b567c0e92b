#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/middleware/qv_value.h"
#include "ros2/messages/report_msgs.h"

namespace QV::ros2 {

/** Writes the drivers' inputs into messages; each key's name goes into the first message with that
 * key. */
class InputEncoder {
 public:
  void add(qv_msgs::Inputs& inputs, const std::string& key, const QVValue& value, bool raised);

 private:
  std::unordered_map<std::string, std::uint32_t> numbers;
};

/** A key that was set, or an event that was raised. */
struct InputWrite {
  std::string key;
  QVValue value;
  bool raised = false;
};

/** Reads them again, in the order of the recording. */
class InputDecoder {
 public:
  /** std::runtime_error for a message that no encoder writes. */
  std::vector<InputWrite> decode(const qv_msgs::Inputs& inputs);

 private:
  void xLearn(const std::vector<std::string>& newKeys);

  std::vector<std::string> keys;
  std::uint64_t keyBytes = 0;
};

}  // namespace QV::ros2
