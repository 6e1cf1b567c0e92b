#include "sensor/simulation/internal/shared_pose_pair.h"

#include <latch>
#include <thread>

#include <gtest/gtest.h>

namespace QV::sensor {
namespace {

PosePair filledWith(float value) {
  return {Math::Pose2D(value, value, value), Math::Pose2D(value, value, value)};
}

bool isWhole(const PosePair& pair) {
  return pair.scanPose == pair.referencePose && pair.scanPose.x == pair.scanPose.theta;
}

TEST(SharedPosePair, readersNeverSeeAHalfWrittenPair) {
  SharedPosePair sut;
  std::latch go(2);
  std::atomic<int> torn{0};
  const auto writeAndRead = [&](float sign) {
    go.arrive_and_wait();
    for (int i = 0; i < 50'000; ++i) {
      sut.store(filledWith(sign * static_cast<float>(i)));
      if (!isWhole(sut.load())) ++torn;
    }
  };
  std::thread other(writeAndRead, -1.0f);
  writeAndRead(1.0f);
  other.join();
  EXPECT_EQ(torn, 0);
}

}  // namespace
}  // namespace QV::sensor
