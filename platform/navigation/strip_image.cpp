#include "platform/navigation/strip_image.h"

#include <algorithm>

namespace QV::detail {

StripImage::StripImage(int columns, int rows)
    : strips(static_cast<std::size_t>((columns + kStripColumns - 1) / kStripColumns)),
      blocks(strips * static_cast<std::size_t>((rows + 2) / kGroupRows + 1 + kGroupsBelow)),
      usedRows(blocks.size()) {}

void StripImage::set(int column, int row, bool value) {
  const std::size_t upper = xIndex(column / kStripColumns, row / kGroupRows);
  const auto word = static_cast<std::size_t>(column % kStripColumns);
  const int bit = row % kGroupRows;
  xSet(upper, word, bit, value);
  xSet(upper - strips, word, kGroupRows + bit, value);
}

bool StripImage::get(int column, int row) const {
  const Block& block = getBlock(column / kStripColumns, row / kGroupRows);
  return (block.words[static_cast<std::size_t>(column % kStripColumns)] >> row % kGroupRows) & 1u;
}

void StripImage::fetchAround(int column, int row) const {
  const int strip = column / kStripColumns;
  const int group = row / kGroupRows;
  const int left = std::max(strip - 1, 0);
  const int right = std::min(strip + 1, static_cast<int>(strips) - 1);
  for (int below = group - 1; below <= group; ++below) {
    __builtin_prefetch(&getBlock(left, below));
    __builtin_prefetch(&getBlock(strip, below));
    __builtin_prefetch(&getBlock(right, below));
  }
}

std::size_t StripImage::getBytes() const {
  return blocks.size() * (sizeof(Block) + sizeof(usedRows[0]));
}

void StripImage::xSet(std::size_t block, std::size_t word, int bit, bool value) {
  auto& words = blocks[block].words;
  const std::uint32_t mask = std::uint32_t{1} << bit;
  if (value) {
    words[word] |= mask;
    usedRows[block] |= mask;
    return;
  }
  words[word] &= ~mask;
  std::uint32_t used = 0;
  for (const std::uint32_t column : words) used |= column;
  usedRows[block] = used;
}

}  // namespace QV::detail
