#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace QV::ros2 {

/** Counts what has been read ahead and waits, so that no file makes it more than kMost. */
class WaitingBytes {
 public:
  static constexpr std::uint64_t kMost = std::uint64_t{512} << 20;

  /** Whoever waits holds it, or a copy. */
  using Claim = std::shared_ptr<const void>;

  /** More than kMost together: std::runtime_error. */
  Claim claim(std::uint64_t bytes) {
    if (bytes > kMost - *total)
      throw std::runtime_error("up to " + std::to_string(kMost) +
                               " bytes that wait expected, more given");
    *total += bytes;
    return {total.get(), [all = total, bytes](const void*) { *all -= bytes; }};
  }

 private:
  const std::shared_ptr<std::atomic<std::uint64_t>> total =
      std::make_shared<std::atomic<std::uint64_t>>(0);
};

}  // namespace QV::ros2
