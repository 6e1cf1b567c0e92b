#pragma once

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace QV::test {

/** The memory that a thread took from the heap by operator new. */
struct Heap {
  int allocations = 0;
  double bytes = 0.0;
  /** The number of those of at least this size. */
  int bigOnes = 0;
  std::size_t bigSize = std::numeric_limits<std::size_t>::max();
  /** Called before the next one, which it may keep waiting. */
  const std::function<void()>* onNext = nullptr;
};
inline thread_local Heap heap;

}  // namespace QV::test

// Include it in one source of a program. The operator is not inlined: else the compiler takes the
// new and the free for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  QV::test::Heap& heap = QV::test::heap;
  if (const auto* const call = std::exchange(heap.onNext, nullptr)) (*call)();
  ++heap.allocations;
  heap.bytes += static_cast<double>(size);
  heap.bigOnes += size >= heap.bigSize;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
