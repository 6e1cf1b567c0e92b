#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace QV::sensor {

/**
 * A value under a sequence lock: one thread at a time writes it, any thread reads it. A writer
 * never waits; a reader tries again while a write is in progress. The count is odd meanwhile.
 */
template <typename T>
class SequenceLocked {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  void store(const T& value) noexcept {
    Words words{};
    std::memcpy(words.data(), &value, sizeof(T));
    const std::uint32_t even = sequence.load(std::memory_order_relaxed);
    sequence.store(even + 1, std::memory_order_relaxed);
    // Released one by one, so that none can be seen before the odd count.
    for (std::size_t i = 0; i < words.size(); ++i) {
      stored[i].store(words[i], std::memory_order_release);
    }
    sequence.store(even + 2, std::memory_order_release);
  }

  T load() const noexcept {
    while (true) {
      const std::uint32_t before = sequence.load(std::memory_order_acquire);
      const T value = loadOwn();
      if (before % 2 == 0 && before == sequence.load(std::memory_order_relaxed)) return value;
    }
  }

  /** Loads the value in the thread that writes. */
  T loadOwn() const noexcept {
    Words words;
    for (std::size_t i = 0; i < words.size(); ++i) {
      words[i] = stored[i].load(std::memory_order_acquire);
    }
    T value;
    std::memcpy(static_cast<void*>(&value), words.data(), sizeof(T));
    return value;
  }

 private:
  using Words = std::array<std::uint64_t, (sizeof(T) + 7) / 8>;

  std::atomic<std::uint32_t> sequence{0};
  std::array<std::atomic<std::uint64_t>, std::tuple_size_v<Words>> stored{};
};

}  // namespace QV::sensor
