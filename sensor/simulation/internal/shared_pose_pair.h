#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/api.h"
#include "platform/math/pose2d.h"

namespace QV::sensor {

struct QV_API PosePair {
  Math::Pose2D scanPose;
  Math::Pose2D referencePose;
};

/**
 * A pair of poses under a sequence lock: any thread may write and read it, and a reader gets one
 * whole pair. The count is odd while a write is going on; readers try again when it has moved.
 */
class QV_API SharedPosePair {
 public:
  void store(const PosePair& pair) noexcept;
  PosePair load() const noexcept;

 private:
  std::atomic<std::uint32_t> sequence{0};
  std::array<std::atomic<float>, 6> values{};
};

}  // namespace QV::sensor
