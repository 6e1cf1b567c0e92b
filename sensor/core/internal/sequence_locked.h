#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>
#include <type_traits>

namespace QV::sensor {

/**
 * A value under a sequence lock: one thread at a time writes it, any thread reads it. A writer
 * never waits; a reader tries again while a write is in progress, and leaves the processor to a
 * writer that was stopped in the middle. The count is odd meanwhile.
 */
template <typename T>
class SequenceLocked {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  void store(const T& value) noexcept { xStore(value); }

  /** Stores the beginning of the value only. */
  template <typename Head>
  void storeHead(const Head& head) noexcept {
    static_assert(sizeof(Head) <= sizeof(T) && sizeof(Head) % sizeof(std::uint64_t) == 0);
    xStore(head);
  }

  T load() const noexcept { return loadHead<T>(); }

  /** The same for the beginning of the value. */
  template <typename Head>
  Head loadHead() const noexcept {
    for (int tries = 1;; ++tries) {
      const std::uint32_t before = sequence.load(std::memory_order_acquire);
      const Head value = xLoad<Head>();
      if (before % 2 == 0 && before == sequence.load(std::memory_order_relaxed)) return value;
      if (tries % kTries == 0) std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  }

  /** Loads the value in the thread that writes. */
  T loadOwn() const noexcept { return xLoad<T>(); }

  /** The same for the beginning of the value. */
  template <typename Head>
  Head loadOwnHead() const noexcept {
    return xLoad<Head>();
  }

 private:
  static constexpr int kTries = 100;

  template <typename Part>
  using WordsOf = std::array<std::uint64_t, (sizeof(Part) + 7) / 8>;

  template <typename Part>
  void xStore(const Part& part) noexcept {
    static_assert(std::is_trivially_copyable_v<Part>);
    WordsOf<Part> words{};
    std::memcpy(words.data(), &part, sizeof(Part));
    const std::uint32_t even = sequence.load(std::memory_order_relaxed);
    sequence.store(even + 1, std::memory_order_relaxed);
    // Released one by one, so that none can be seen before the odd count.
    for (std::size_t i = 0; i < words.size(); ++i) {
      stored[i].store(words[i], std::memory_order_release);
    }
    sequence.store(even + 2, std::memory_order_release);
  }

  template <typename Part>
  Part xLoad() const noexcept {
    WordsOf<Part> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
      words[i] = stored[i].load(std::memory_order_acquire);
    }
    Part part;
    std::memcpy(static_cast<void*>(&part), words.data(), sizeof(Part));
    return part;
  }

  std::atomic<std::uint32_t> sequence{0};
  std::array<std::atomic<std::uint64_t>, std::tuple_size_v<WordsOf<T>>> stored{};
};

}  // namespace QV::sensor
