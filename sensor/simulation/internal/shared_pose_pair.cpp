#include "sensor/simulation/internal/shared_pose_pair.h"

namespace QV::sensor {

void SharedPosePair::store(const PosePair& pair) noexcept {
  std::lock_guard lock(writing);
  const std::uint32_t next = count.load(std::memory_order_relaxed) + 1;
  const float written[] = {pair.scanPose.x,      pair.scanPose.y,      pair.scanPose.theta,
                           pair.referencePose.x, pair.referencePose.y, pair.referencePose.theta};
  Place& place = places[next % 2];
  // Released one by one: who sees one of them also sees the count that freed this place.
  for (std::size_t i = 0; i < place.size(); ++i) {
    place[i].store(written[i], std::memory_order_release);
  }
  count.store(next, std::memory_order_release);
}

PosePair SharedPosePair::load() const noexcept {
  while (true) {
    const std::uint32_t before = count.load(std::memory_order_acquire);
    const Place& place = places[before % 2];
    std::array<float, 6> read;
    for (std::size_t i = 0; i < place.size(); ++i) {
      read[i] = place[i].load(std::memory_order_acquire);
    }
    if (before == count.load(std::memory_order_relaxed)) {
      return {Math::Pose2D(read[0], read[1], read[2]), Math::Pose2D(read[3], read[4], read[5])};
    }
  }
}

}  // namespace QV::sensor
