#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/api.h"

namespace QV::detail {

/**
 * One bit for each cell of a grid, laid out for rays that advance column by column and rise or fall
 * by at most a row in each. Strips of 16 columns are cut into blocks of 32 rows, one word a column.
 * Blocks overlap by half: whatever the height at which a ray enters a strip, one block holds all
 * that it crosses there. Copyable. Reading is safe from several threads as long as none writes.
 */
class QV_API StripImage {
 public:
  static constexpr int kStripBits = 4;
  static constexpr int kStripColumns = 1 << kStripBits;
  static constexpr int kGroupBits = 4;
  static constexpr int kGroupRows = 1 << kGroupBits;

  /** Bit r of word c is row r of column c, counted from the block's corner. */
  struct alignas(64) Block {
    std::array<std::uint32_t, kStripColumns> words{};
  };

  /** Where the blocks stand, for a loop to hold; good while the image lives and is not assigned. */
  class View {
   public:
    explicit View(const StripImage& image)
        : strips(static_cast<std::ptrdiff_t>(image.strips)),
          blocks(image.blocks.data() + kGroupsBelow * strips),
          usedRows(image.usedRows.data() + kGroupsBelow * strips) {}

    const Block& getBlock(int strip, int group) const { return blocks[group * strips + strip]; }
    std::uint32_t getUsedRows(int strip, int group) const {
      return usedRows[group * strips + strip];
    }
    /** Has the memory send both, which are to be read soon. */
    void fetch(int strip, int group) const {
      __builtin_prefetch(&blocks[group * strips + strip]);
      __builtin_prefetch(&usedRows[group * strips + strip]);
    }

   private:
    std::ptrdiff_t strips;
    const Block* blocks;
    const std::uint32_t* usedRows;
  };

  /** All bits 0. */
  StripImage(int columns, int rows);

  /** A cell inside the grid, unchecked. */
  void set(int column, int row, bool value);
  bool get(int column, int row) const;

  /**
   * The block of strip `strip` whose rows begin at 16 * `group`. Groups reach from -2 to
   * (rows + 2) / 16, so that a ray which passes a little below or above the grid needs no check.
   */
  const Block& getBlock(int strip, int group) const { return View(*this).getBlock(strip, group); }
  /** The rows of that block in which any bit is set. */
  std::uint32_t getUsedRows(int strip, int group) const {
    return View(*this).getUsedRows(strip, group);
  }

  /** Has the memory send the blocks that hold a cell inside the grid, which are to be read soon. */
  void fetch(int column, int row) const;

  std::size_t getBytes() const;

 private:
  static constexpr int kGroupsBelow = 2;

  std::size_t xIndex(int strip, int group) const {
    return static_cast<std::size_t>(group + kGroupsBelow) * strips +
           static_cast<std::size_t>(strip);
  }
  void xSet(std::size_t block, std::size_t word, int bit, bool value);

  std::size_t strips;
  std::vector<Block> blocks;
  std::vector<std::uint32_t> usedRows;
};

}  // namespace QV::detail
