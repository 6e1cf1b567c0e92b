#include "platform/ko/internal/crew.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
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

std::ptrdiff_t countThreads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(Crew, returnsOnlyWhenAllHelpersAreDone) {
  for (int i = 0; i < 100; ++i) meet();
}

TEST(Crew, worksAloneIfAllHelpersAreBusy) {
  const auto before = countThreads();
  std::atomic<int> count{0};
  shareWork([&] { shareWork([&] { shareWork([&] { ++count; }, 300); }, 300); }, 1);
  EXPECT_GE(count, 1);
  const auto most = std::max<std::ptrdiff_t>(std::thread::hardware_concurrency(), 2) - 1;
  EXPECT_LE(countThreads() - before, most);
}

TEST(Crew, keepsAnOfferThatWaitsForABusyHelper) {
  std::latch busy(2);
  std::latch done(1);
  const std::jthread first([&] {
    shareWork(
        [&] {
          busy.arrive_and_wait();
          done.wait();
        },
        1);
  });
  busy.wait();
  std::latch offered(1);
  std::latch both(2);
  const std::jthread waiting([&] {
    const auto caller = std::this_thread::get_id();
    shareWork(
        [&] {
          if (std::this_thread::get_id() == caller) offered.count_down();
          both.arrive_and_wait();
        },
        1);
  });
  offered.wait();
  shareWork([] {}, 1);
  done.count_down();
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
    constexpr int kLooks = 2'000;
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
