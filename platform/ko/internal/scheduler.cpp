#include "platform/ko/internal/scheduler.h"

#include <atomic>
#include <mutex>

#include "platform/ko/log.h"

namespace ko::detail {
namespace {

std::atomic<bool> taken{false};
std::mutex installedMutex;
boost::shared_ptr<Scheduler> installed;

}  // namespace

std::uint64_t nextOrder() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

boost::shared_ptr<Scheduler> currentScheduler() {
  if (taken) {
    std::lock_guard lock(installedMutex);
    if (installed) return installed;
  }
  return machineScheduler();
}

void installScheduler(boost::shared_ptr<Scheduler> scheduler) {
  std::lock_guard lock(installedMutex);
  taken = scheduler != nullptr;
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
