#include "sensor/simulation/internal/shared_pose_pair.h"

namespace QV::sensor {

void SharedPosePair::store(const PosePair& pair) noexcept {
  std::uint32_t even = sequence.load(std::memory_order_relaxed) & ~1u;
  while (!sequence.compare_exchange_weak(even, even + 1, std::memory_order_acquire,
                                         std::memory_order_relaxed)) {
    even &= ~1u;
  }
  const float written[] = {pair.scanPose.x,      pair.scanPose.y,      pair.scanPose.theta,
                           pair.referencePose.x, pair.referencePose.y, pair.referencePose.theta};
  // Released one by one, so that none can be seen before the odd count.
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i].store(written[i], std::memory_order_release);
  }
  sequence.store(even + 2, std::memory_order_release);
}

PosePair SharedPosePair::load() const noexcept {
  while (true) {
    const std::uint32_t before = sequence.load(std::memory_order_acquire);
    std::array<float, 6> read;
    for (std::size_t i = 0; i < values.size(); ++i) {
      read[i] = values[i].load(std::memory_order_acquire);
    }
    const std::uint32_t after = sequence.load(std::memory_order_relaxed);
    if (before == after && before % 2 == 0) {
      return {Math::Pose2D(read[0], read[1], read[2]), Math::Pose2D(read[3], read[4], read[5])};
    }
  }
}

}  // namespace QV::sensor
