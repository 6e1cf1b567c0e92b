#include "sensor/simulation/internal/shared_pose_pair.h"

#include <atomic>
#include <csignal>
#include <latch>
#include <pthread.h>
#include <sched.h>
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

#ifndef __SANITIZE_THREAD__  // It holds signals back.

/** Stops a thread wherever it is, and lets it go on. */
class Brake {
 public:
  Brake() {
    signal(SIGUSR1, [](int) { stand(); });
  }
  ~Brake() { signal(SIGUSR1, SIG_DFL); }

  void stop(std::thread& thread) {
    isOn = true;
    pthread_kill(thread.native_handle(), SIGUSR1);
    while (!stands) std::this_thread::yield();
  }
  void release() {
    isOn = false;
    while (stands) std::this_thread::yield();
  }

 private:
  static void stand() {
    stands = true;
    while (isOn) sched_yield();
    stands = false;
  }

  static inline std::atomic<bool> isOn{false};
  static inline std::atomic<bool> stands{false};
};

TEST(SharedPosePair, aWriterThatIsStoppedInTheMiddleHoldsNoReaderUp) {
  SharedPosePair sut;
  std::atomic<bool> isDone{false};
  std::thread writer([&] {
    for (int i = 0; !isDone; ++i) sut.store(filledWith(static_cast<float>(i)));
  });
  Brake brake;
  for (int i = 0; i < 100; ++i) {
    brake.stop(writer);
    EXPECT_TRUE(isWhole(sut.load()));
    brake.release();
  }
  isDone = true;
  writer.join();
}

#endif

}  // namespace
}  // namespace QV::sensor
