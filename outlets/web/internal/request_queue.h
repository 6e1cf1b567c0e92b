#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/api.h"
#include "session/internal/command.h"

namespace QV::outlets {

/** A command, and the function that reports a refusal. */
struct LiveRequest {
  session::Command command;
  /** Refuses the request with the reason; called on the session's thread. */
  std::function<void(const std::string&)> refuse;
};

/** Commands on their way from the server's thread to the session's. Thread-safe. */
class QV_API RequestQueue {
 public:
  static constexpr std::size_t kMost = 256;
  using Refusal = std::function<void(const std::string&)>;

  /** False, and nothing is kept, while kMost wait. */
  bool add(LiveRequest request);

  /** All that came, in order; waits until `end` for the first. */
  std::vector<LiveRequest> takeUntil(std::chrono::steady_clock::time_point end);

 private:
  std::mutex mutex;
  std::condition_variable came;
  std::vector<LiveRequest> requests;
};

}  // namespace QV::outlets
