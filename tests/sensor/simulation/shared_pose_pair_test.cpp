#include "sensor/simulation/shared_pose_pair.h"

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

TEST(SharedPosePair, aReaderSeesOneWholePairWhileTwoThreadsWrite) {
  SharedPosePair sut;
  std::latch go(3);
  const auto write = [&](float sign) {
    go.arrive_and_wait();
    for (int i = 0; i < 20000; ++i) sut.store(filledWith(sign * static_cast<float>(i)));
  };
  std::thread writers[] = {std::thread(write, 1.0f), std::thread(write, -1.0f)};
  go.arrive_and_wait();
  int torn = 0;
  for (int i = 0; i < 20000; ++i) torn += isWhole(sut.load()) ? 0 : 1;
  for (auto& writer : writers) writer.join();
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(std::abs(sut.load().scanPose.x), 19999.0f);
}

}  // namespace
}  // namespace QV::sensor
