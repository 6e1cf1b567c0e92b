#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "ros2/bag/bag_reader.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/support/temporary_folder.h"

namespace QV::test {

constexpr std::uint64_t kSecond = 1'000'000'000;

/** Writes `count` messages, ten a second, alternately on two topics; the text names the number. */
class SmallBag {
 public:
  explicit SmallBag(const std::string& path, const ros2::BagOptions& options = {})
      : writer(path, options),
        texts(writer.addTopic(ros2::makeBagTopic("/text", ros2::std_msgs::String::getType()))),
        ranges(writer.addTopic(ros2::makeBagTopic("/range", ros2::sensor_msgs::Range::getType(),
                                                  {.transientLocal = true}))) {}

  void write(int count) {
    for (int i = 0; i < count; ++i, ++written) {
      const std::uint64_t time = (100 + static_cast<std::uint64_t>(written)) * kSecond / 10;
      if (written % 2 == 0) {
        writer.write(texts, time, ros2::std_msgs::String{"number " + std::to_string(written)});
      } else {
        ros2::sensor_msgs::Range range;
        range.range = static_cast<float>(written);
        writer.write(ranges, time, range);
      }
    }
  }

  ros2::BagWriter writer;
  const std::uint16_t texts;
  const std::uint16_t ranges;
  int written = 0;
};

/** The numbers of the messages, -1 for one that SmallBag did not write. */
template <typename Reader>
std::vector<int> numbersIn(Reader& reader) {
  std::vector<int> numbers;
  while (const auto message = reader.next()) {
    try {
      const bool isText = message->topic->name == "/text";
      const int number =
          isText ? std::stoi(ros2::fromCdr<ros2::std_msgs::String>(message->data).data.substr(7))
                 : static_cast<int>(ros2::fromCdr<ros2::sensor_msgs::Range>(message->data).range);
      const std::uint64_t time = (100 + static_cast<std::uint64_t>(number)) * kSecond / 10;
      numbers.push_back(message->logTime == time && message->publishTime == time ? number : -1);
    } catch (const std::exception&) {
      numbers.push_back(-1);
    }
  }
  return numbers;
}

inline std::vector<int> numbersIn(const std::string& path) {
  ros2::BagReader reader(path);
  return numbersIn(reader);
}

inline std::vector<int> numbersFrom(int first, int last) {
  std::vector<int> numbers;
  for (int i = first; i <= last; ++i) numbers.push_back(i);
  return numbers;
}

}  // namespace QV::test
