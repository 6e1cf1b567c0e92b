#include "robot/services/internal/spare_bytes.h"

#include <atomic>
#include <latch>
#include <thread>

#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

TEST(SpareBytes, aReturnedBufferIsTakenAgainAsZerosForItsSizeOnly) {
  SpareBytes sut;
  auto bytes = sut.take(1000);
  const auto* const place = bytes->data();
  bytes->at(7) = 1;
  bytes.reset();
  const auto other = sut.take(900);
  EXPECT_NE(other->data(), place);
  const auto again = sut.take(1000);
  EXPECT_EQ(again->data(), place);
  EXPECT_THAT(*again, testing::Each(0));
}

TEST(SpareBytes, aBufferHasOneHolderOnAllThreads) {
  SpareBytes sut;
  std::latch go(2);
  std::atomic<int> foreign{0};
  const auto takeAndReturn = [&](std::uint8_t own) {
    go.arrive_and_wait();
    for (int i = 0; i < 20'000; ++i) {
      const auto bytes = sut.take(8);
      bytes->assign(8, own);
      if (*bytes != SpareBytes::Bytes(8, own)) ++foreign;
    }
  };
  std::thread other(takeAndReturn, std::uint8_t{1});
  takeAndReturn(2);
  other.join();
  EXPECT_EQ(foreign, 0);
}

}  // namespace
}  // namespace QV::robot
