#include "robot/services/internal/spare_bytes.h"

#include <algorithm>
#include <utility>

namespace QV::robot {

using Lock = std::lock_guard<std::mutex>;

std::shared_ptr<SpareBytes::Bytes> SpareBytes::take(std::size_t size) {
  auto loan = std::make_shared<Loan>(store, size);
  Bytes* const bytes = &loan->bytes;
  return {std::move(loan), bytes};
}

SpareBytes::Bytes SpareBytes::Store::take(std::size_t size) {
  Bytes bytes;
  {
    Lock lock(mutex);
    const auto spare = std::find_if(spares.begin(), spares.end(),
                                    [&](const Bytes& b) { return b.capacity() == size; });
    if (spare != spares.end()) {
      bytes = std::move(*spare);
      spares.erase(spare);
    }
  }
  bytes.assign(size, 0);
  return bytes;
}

void SpareBytes::Store::give(Bytes&& bytes) noexcept {
  Lock lock(mutex);
  if (spares.size() == kMost) spares.erase(spares.begin());
  spares.push_back(std::move(bytes));
}

}  // namespace QV::robot
