#include "platform/ko/internal/crew.h"

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/child_process.h"

namespace ko {
namespace {

using detail::shareWork;

/** Returns once two threads are in it at the same time. */
void meet() {
  std::latch both(2);
  shareWork([&] { both.arrive_and_wait(); }, 1);
}

TEST(Crew, returnsOnlyWhenAllHelpersAreDone) {
  for (int i = 0; i < 100; ++i) meet();
}

TEST(Crew, worksAloneIfAllHelpersAreBusy) {
  std::atomic<int> count{0};
  shareWork([&] { shareWork([&] { shareWork([&] { ++count; }, 300); }, 300); }, 1);
  EXPECT_GE(count, 1);
}

TEST(Crew, runsEachPieceOfWorkOnceForManyCallers) {
  constexpr int kCalls = 200;
  constexpr int kParts = 64;
  const auto callMany = [] {
    for (int i = 0; i < kCalls; ++i) {
      // No lock: the crew is what orders the parts before their caller's return.
      std::vector<int> parts(kParts, 0);
      std::atomic<std::size_t> next{0};
      shareWork(
          [&] {
            for (std::size_t part; (part = next++) < parts.size();) ++parts[part];
          },
          3);
      ASSERT_EQ(parts, std::vector<int>(kParts, 1));
    }
  };
  std::vector<std::jthread> callers;
  for (int i = 0; i < 4; ++i) callers.emplace_back(callMany);
}

TEST(Crew, aThrowingCallerStillWaitsForItsHelpers) {
  const auto caller = std::this_thread::get_id();
  std::latch both(2);
  std::atomic<bool> returned{false};
  std::atomic<bool> wasAwaited{false};
  const auto work = [&] {
    both.arrive_and_wait();
    if (std::this_thread::get_id() == caller) throw std::runtime_error("no room");
    constexpr int kLooks = 20'000;
    for (int i = 0; i < kLooks && !returned; ++i) std::this_thread::yield();
    wasAwaited = !returned;
  };
  try {
    shareWork(work, 1);
    ADD_FAILURE() << "it did not throw";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "no room");
  }
  returned = true;
  EXPECT_TRUE(wasAwaited);
  meet();
}

#ifndef __SANITIZE_THREAD__
TEST(Crew, aForkedChildHasHelpersOfItsOwn) {
  meet();
  QV::test::ChildProcess child;
  child.start([] {
    // A missing helper would block for ever, hence the alarm.
    alarm(20);
    meet();
    _exit(0);
  });
  EXPECT_EQ(child.awaitEnd(), 0);
}
#endif

}  // namespace
}  // namespace ko
