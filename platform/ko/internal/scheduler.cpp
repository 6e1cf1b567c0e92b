#include "platform/ko/internal/scheduler.h"

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/ko/internal/simulated_scheduler.h"
#include "platform/ko/log.h"

namespace ko::detail {
namespace {

// No thread without a SimulatedTime.
std::atomic<std::thread::id> timeOwner{};
std::mutex installedMutex;
boost::shared_ptr<SimulatedScheduler> installed;

boost::shared_ptr<SimulatedScheduler> getInstalled() {
  if (timeOwner.load() == std::thread::id()) return {};
  std::lock_guard lock(installedMutex);
  return installed;
}

}  // namespace

std::atomic<bool> hasOwner{false};

std::uint64_t nextOrder() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

boost::shared_ptr<Scheduler> currentScheduler() {
  if (auto simulated = getInstalled()) return simulated;
  return machineScheduler();
}

bool waitAsOwner(const std::function<bool()>& isOver, const SleeperTest& isAwaited) {
  const auto simulated = getInstalled();
  return simulated && simulated->isOwner() && simulated->waitUntil(isOver, isAwaited);
}

void tellTheOwner() {
  if (timeOwner.load() == std::this_thread::get_id()) return;
  if (const auto simulated = getInstalled()) simulated->tellOwner();
}

void installScheduler(boost::shared_ptr<SimulatedScheduler> scheduler) {
  std::lock_guard lock(installedMutex);
  timeOwner = scheduler ? std::this_thread::get_id() : std::thread::id();
  hasOwner = scheduler != nullptr;
  installed = std::move(scheduler);
}

void callGuarded(const boost::function<void()>& call, const char* category, const char* method,
                 const std::string& prefix) {
  try {
    call();
  } catch (const std::exception& failure) {
    log::error(category, method) << prefix << failure.what();
  } catch (...) {
    log::error(category, method) << prefix << "unknown exception";
  }
}

}  // namespace ko::detail
