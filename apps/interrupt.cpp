#include "apps/interrupt.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace QV::app {
namespace {

// Some senders send a signal twice, to the program and to its group.
constexpr double kSameSeconds = 0.5;

std::atomic<int> caught{0};
std::atomic<double> caughtAt{0.0};
std::atomic<void (*)()> tidyBeforeEnd{nullptr};
std::atomic<bool> stopAsked{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<double>::is_always_lock_free &&
              std::atomic<void (*)()>::is_always_lock_free);

// The chrono clocks are not said to be safe in a signal's handler.
double secondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

extern "C" void onSignal(int signal) {
  const double now = secondsNow();
  if (caught == 0) {
    caughtAt = now;
    caught = signal;
  } else if (now - caughtAt > kSameSeconds) {
    if (const auto tidy = tidyBeforeEnd.load()) tidy();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
}

extern "C" void onStop(int) {
  stopAsked = true;
}

}  // namespace

void catchInterrupts() {
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
}

void forgetInterrupts() {
  caught = 0;
}

void setTidyBeforeEnd(void (*tidy)()) {
  tidyBeforeEnd = tidy;
}

void catchStops() {
  stopAsked = false;
  std::signal(SIGTSTP, onStop);
}

void letStops() {
  std::signal(SIGTSTP, SIG_DFL);
}

bool takeStop() {
  return stopAsked.exchange(false);
}

void stopHere() {
  kill(getpid(), SIGSTOP);
}

bool isInterrupted() {
  return caught != 0;
}

int getInterruptStatus() {
  return 128 + caught;
}

}  // namespace QV::app
