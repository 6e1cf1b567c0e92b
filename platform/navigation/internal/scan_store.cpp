#include "platform/navigation/internal/scan_store.h"

#include <algorithm>
#include <cmath>

namespace QV::detail {

ScanStore::ScanStore(int width, int height, const std::vector<float>& cells, float limit)
    : limit(limit), upright(width, height), turned(height, width) {
  auto cell = cells.begin();
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column, ++cell) {
      if (*cell > limit) setOccupancy(column, row, *cell);
    }
  }
}

void ScanStore::setOccupancy(int column, int row, float occupancy) {
  upright.set(column, row, occupancy > limit);
  turned.set(row, column, occupancy > limit);
}

ScanStores::~ScanStores() {
  for (const auto& store : stores) delete store.load(std::memory_order_relaxed);
}

ScanStores& ScanStores::operator=(ScanStores other) noexcept {
  xSwap(other);
  return *this;
}

const ScanStore* ScanStores::find(int width, int height, const std::vector<float>& cells,
                                  float limit) const {
  if (const ScanStore* const known = xFind(limit)) return known;
  if (std::isnan(limit)) return nullptr;
  const std::lock_guard<std::mutex> lock(making);
  if (const ScanStore* const known = xFind(limit)) return known;
  const auto free = std::find(stores.begin(), stores.end(), nullptr);
  if (free == stores.end()) return nullptr;
  free->store(new ScanStore(width, height, cells, limit), std::memory_order_release);
  return *free;
}

void ScanStores::setOccupancy(int column, int row, float occupancy) {
  for (const auto& store : stores) {
    if (ScanStore* const made = store.load(std::memory_order_relaxed)) {
      made->setOccupancy(column, row, occupancy);
    }
  }
}

const ScanStore* ScanStores::xFind(float limit) const {
  for (const auto& store : stores) {
    const ScanStore* const made = store.load(std::memory_order_acquire);
    if (made == nullptr) return nullptr;
    if (made->getLimit() == limit) return made;
  }
  return nullptr;
}

void ScanStores::xSwap(ScanStores& other) noexcept {
  for (std::size_t i = 0; i < stores.size(); ++i) {
    ScanStore* const own = stores[i].load(std::memory_order_relaxed);
    stores[i].store(other.stores[i].exchange(own, std::memory_order_relaxed),
                    std::memory_order_relaxed);
  }
}

}  // namespace QV::detail
