#include "apps/interrupt.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace QV::app {
namespace {

std::atomic<int> caught{0};
std::atomic<bool> stopAsked{false};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onSignal(int signal) {
  caught = signal;
}

extern "C" void onStop(int) {
  stopAsked = true;
}

}  // namespace

void catchInterrupts() {
  caught = 0;
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
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
