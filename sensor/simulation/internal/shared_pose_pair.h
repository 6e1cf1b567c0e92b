#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/api.h"
#include "platform/math/pose2d.h"

namespace QV::sensor {

struct QV_API PosePair {
  Math::Pose2D scanPose;
  Math::Pose2D referencePose;
};

/**
 * A pair of poses that any thread may write and read; a reader gets one whole pair. The last pair
 * stays in its place while the next is written into the other, so a reader waits for no writer. It
 * tries again only if another pair was completed meanwhile. Writers wait for each other.
 */
class QV_API SharedPosePair {
 public:
  void store(const PosePair& pair) noexcept;
  PosePair load() const noexcept;

 private:
  using Place = std::array<std::atomic<float>, 6>;

  /** The pairs that were completed; the last bit is the place of the last one. */
  std::atomic<std::uint32_t> count{0};
  std::array<Place, 2> places{};
  std::mutex writing;
};

}  // namespace QV::sensor
