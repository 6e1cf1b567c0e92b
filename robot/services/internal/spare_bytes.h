#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

/**
 * Buffers that return when nobody holds them any more; the last four are kept for reuse.
 * Thread-safe.
 */
class QV_API SpareBytes {
 public:
  using Bytes = QVValue::Bytes;

  /** Takes a buffer of so many zeros, one that had as many before if there is one. It may
   * outlive this. */
  std::shared_ptr<Bytes> take(std::size_t size);

 private:
  class Store {
   public:
    Store() { spares.reserve(kMost); }
    Bytes take(std::size_t size);
    void give(Bytes&& bytes) noexcept;

   private:
    static constexpr std::size_t kMost = 4;

    std::mutex mutex;
    std::vector<Bytes> spares;
  };

  struct Loan {
    Loan(std::shared_ptr<Store> from, std::size_t size)
        : store(std::move(from)), bytes(store->take(size)) {}
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() { store->give(std::move(bytes)); }

    const std::shared_ptr<Store> store;
    Bytes bytes;
  };

  std::shared_ptr<Store> store = std::make_shared<Store>();
};

}  // namespace QV::robot
