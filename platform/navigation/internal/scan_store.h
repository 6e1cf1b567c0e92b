#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <vector>

#include "platform/api.h"
#include "platform/navigation/internal/strip_image.h"

namespace QV::detail {

/** The cells whose occupancy is above a limit, as bits: what a scan looks at in their place. */
class QV_API ScanStore {
 public:
  /** Builds the store from occupancies, row by row. */
  ScanStore(int width, int height, const std::vector<float>& cells, float limit);

  void setOccupancy(int column, int row, float occupancy);

  float getLimit() const { return limit; }
  /** The map as it is, and turned: its rows as columns. */
  const StripImage& getUpright() const { return upright; }
  const StripImage& getTurned() const { return turned; }
  /** Answers as StripImage does; false more seldom. */
  bool isFreeAround(int column, int row, int distance) const {
    return upright.isFreeAround(column, row, distance) ||
           turned.isFreeAround(row, column, distance);
  }
  /** Prefetches what rays from a cell inside the map look at first. */
  void fetch(int column, int row) const {
    upright.fetch(column, row);
    turned.fetch(row, column);
  }
  std::size_t getBytes() const { return upright.getBytes() + turned.getBytes(); }

 private:
  float limit;
  StripImage upright;
  StripImage turned;
};

/**
 * The stores of a map: one for each of the first two limits that it is scanned with, made when
 * first asked for. A copy has none and makes its own. Any number of threads may look for a store at
 * once, as long as none sets cells.
 */
class QV_API ScanStores {
 public:
  ScanStores() = default;
  ~ScanStores();
  ScanStores(const ScanStores&) {}
  ScanStores(ScanStores&& other) noexcept { xSwap(other); }
  ScanStores& operator=(ScanStores other) noexcept;

  /** Null for a third limit, and for one that is not a number. */
  const ScanStore* find(int width, int height, const std::vector<float>& cells, float limit) const;

  void setOccupancy(int column, int row, float occupancy);

 private:
  const ScanStore* xFind(float limit) const;
  void xSwap(ScanStores& other) noexcept;

  /** Filled in order; what is there stays. */
  mutable std::array<std::atomic<ScanStore*>, 2> stores{};
  mutable std::mutex making;
};

}  // namespace QV::detail
