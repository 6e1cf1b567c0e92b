#include "outlets/web/internal/request_queue.h"

#include <utility>

namespace QV::outlets {

bool RequestQueue::add(LiveRequest request) {
  {
    std::lock_guard lock(mutex);
    if (requests.size() >= kMost) return false;
    requests.push_back(std::move(request));
  }
  came.notify_one();
  return true;
}

std::vector<LiveRequest> RequestQueue::takeUntil(std::chrono::steady_clock::time_point end) {
  std::unique_lock lock(mutex);
  came.wait_until(lock, end, [this] { return !requests.empty(); });
  return std::exchange(requests, {});
}

}  // namespace QV::outlets
