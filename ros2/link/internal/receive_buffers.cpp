#include "ros2/link/internal/receive_buffers.h"

#include <fstream>
#include <limits>

#include "platform/ko/log.h"

namespace QV::ros2 {
namespace {

/** Linux's default for three cameras held 2.2 times less than their images, and all came at once;
 * for ten, 7.2 times, and some came up to half a second later. */
constexpr std::uint64_t kHeldShare = 3;
constexpr std::uint64_t kKilobyte = 1000;

/** Everything fits where the system says nothing. */
std::uint64_t readLimit() {
  std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() / kHeldShare;
  std::ifstream("/proc/sys/net/core/rmem_max") >> limit;
  return limit;
}

}  // namespace

ImageTopics& ImageTopics::ofProgram() {
  static ImageTopics all(readLimit());
  return all;
}

void ImageTopics::note(std::size_t bytes) {
  const std::size_t topics = count;
  if (isSaid || judgedCount.exchange(topics) == topics) return;
  const std::uint64_t atOnce = topics * bytes;
  if (atOnce <= kHeldShare * limit || isSaid.exchange(true)) return;
  ko::log::warning("ROS2.Robot", "write")
      << "images of " << topics << " topics, " << atOnce / kKilobyte
      << " kB at once, may come late or get lost: receive buffers hold " << limit / kKilobyte
      << " kB; for more, run on each machine that reads them: sysctl -w net.core.rmem_max="
      << 2 * atOnce;
}

}  // namespace QV::ros2
