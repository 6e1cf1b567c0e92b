#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/api.h"

namespace QV::detail {

/**
 * A grid with one bit for each cell, laid out for rays that advance column by column and rise or
 * fall by at most a row in each. Strips of 16 columns are cut into blocks of 32 rows, one word a
 * column. Blocks overlap by half: whatever the height at which a ray enters a strip, one block
 * holds all that it crosses there. A mask beside the blocks tells which rows of a strip are used at
 * all. Copyable. Reading is thread-safe as long as nobody writes.
 */
class QV_API StripImage {
 public:
  static constexpr int kStripBits = 4;
  static constexpr int kStripColumns = 1 << kStripBits;
  static constexpr int kGroupBits = 4;
  static constexpr int kGroupRows = 1 << kGroupBits;
  /** The least number of rows whose use is told at a time. */
  static constexpr int kRowsSeen = 33;
  /** The farthest that isFreeAround looks, in cells. */
  static constexpr int kFarthestAround = (kRowsSeen - 1) / 2;

  /** Bit r of word c is row r of column c, counted from the block's corner. */
  struct alignas(64) Block {
    std::array<std::uint32_t, kStripColumns> words{};
  };

  /** The place of the blocks, for a loop to hold; good while the image lives and is not
   * assigned. */
  class View {
   public:
    explicit View(const StripImage& image)
        : strips(static_cast<std::ptrdiff_t>(image.strips)),
          blocks(image.blocks.data() + kGroupsBelow * strips),
          usedRows(image.usedRows.data() + kUsedBelow * strips) {}

    const Block& getBlock(int strip, int group) const { return blocks[group * strips + strip]; }
    std::uint64_t getUsedRows(int strip, int row) const {
      return usedRows[(row >> kUsedBits) * strips + strip] >> (row & (kUsedStep - 1));
    }
    /** Prefetches a block; what lies outside does no harm. */
    void fetchBlock(int strip, int group) const { xFetch(blocks, group * strips + strip); }
    void fetchUsedRows(int strip, int row) const {
      xFetch(usedRows, (row >> kUsedBits) * strips + strip);
    }

   private:
    template <typename Item>
    static void xFetch(const Item* items, std::ptrdiff_t index) {
      const auto bytes = static_cast<std::uintptr_t>(index) * sizeof(Item);
      __builtin_prefetch(
          reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(items) + bytes));
    }

    std::ptrdiff_t strips;
    const Block* blocks;
    const std::uint64_t* usedRows;
  };

  /** All bits 0. */
  StripImage(int columns, int rows);

  /** A cell inside the grid, unchecked. */
  void set(int column, int row, bool value);
  bool get(int column, int row) const {
    const Block& block = getBlock(column >> kStripBits, row >> kGroupBits);
    const auto word = static_cast<std::size_t>(column & (kStripColumns - 1));
    return (block.words[word] >> (row & (kGroupRows - 1)) & 1u) != 0;
  }

  /**
   * The block of strip `strip` whose rows begin at 16 * `group`. Groups reach from -2 to
   * (rows + 2) / 16, so that a ray which passes a little below or above the grid needs no check.
   */
  const Block& getBlock(int strip, int group) const { return View(*this).getBlock(strip, group); }
  /**
   * The rows of a strip, from `row` on, in which any bit is set: kRowsSeen of them; of the others
   * nothing is said. Rows reach as far as groups do.
   */
  std::uint64_t getUsedRows(int strip, int row) const {
    return View(*this).getUsedRows(strip, row);
  }

  /**
   * True if nothing is set within `distance` columns and rows, kFarthestAround at most, of a cell
   * inside the grid. It may be false, too, for what else these strips hold in these rows.
   */
  bool isFreeAround(int column, int row, int distance) const;

  /** Prefetches what it keeps around a cell inside the grid. */
  void fetch(int column, int row) const;

  std::size_t getBytes() const;

 private:
  static constexpr int kGroupsBelow = 2;
  static constexpr int kUsedBits = 5;
  static constexpr int kUsedStep = 1 << kUsedBits;
  static constexpr int kUsedBelow = 1;

  std::size_t xIndex(int strip, int group) const {
    return static_cast<std::size_t>(group + kGroupsBelow) * strips +
           static_cast<std::size_t>(strip);
  }
  void xSetUsed(int strip, int row, bool value);

  std::size_t strips;
  std::vector<Block> blocks;
  std::vector<std::uint64_t> usedRows;
};

}  // namespace QV::detail
