#include "ros2/link/internal/receive_buffers.h"

#include <atomic>
#include <fstream>
#include <limits>

#include "platform/ko/log.h"

namespace QV::ros2 {
namespace {

/** Linux's default for three cameras held 2.2 times less than their images, and none was lost; for
 * ten, 7.2 times, and some were. */
constexpr std::uint64_t kHeldShare = 3;
constexpr std::uint64_t kKilobyte = 1000;

std::atomic<std::size_t> topicCount{0};
std::atomic<std::size_t> judgedCount{0};
std::atomic<bool> isSaid{false};

/** Everything fits where the system says nothing. */
std::uint64_t readLimit() {
  std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() / kHeldShare;
  std::ifstream("/proc/sys/net/core/rmem_max") >> limit;
  return limit;
}

}  // namespace

std::optional<std::string> adviseOnBuffers(std::size_t topics, std::size_t bytes,
                                           std::uint64_t limit) {
  const std::uint64_t atOnce = topics * bytes;
  if (atOnce <= kHeldShare * limit) return std::nullopt;
  return "images of " + std::to_string(topics) + " topics, " + std::to_string(atOnce / kKilobyte) +
         " kB at once, may get lost: receive buffers hold " + std::to_string(limit / kKilobyte) +
         " kB; for more, run on each machine that reads them: sysctl -w net.core.rmem_max=" +
         std::to_string(2 * atOnce);
}

ImageTopic::ImageTopic() {
  ++topicCount;
}

ImageTopic::~ImageTopic() {
  --topicCount;
}

void ImageTopic::note(std::size_t bytes) {
  const std::size_t topics = topicCount;
  if (isSaid || judgedCount.exchange(topics) == topics) return;
  const auto advice = adviseOnBuffers(topics, bytes, readLimit());
  if (advice && !isSaid.exchange(true)) ko::log::warning("ROS2.Robot", "write") << *advice;
}

}  // namespace QV::ros2
