#include "platform/navigation/strip_image.h"

namespace QV::detail {
namespace {

void setBit(std::uint32_t& word, int bit, bool value) {
  const std::uint32_t mask = std::uint32_t{1} << bit;
  word = value ? word | mask : word & ~mask;
}

}  // namespace

StripImage::StripImage(int columns, int rows)
    : strips(static_cast<std::size_t>((columns + kStripColumns - 1) / kStripColumns)),
      blocks(strips * static_cast<std::size_t>((rows + 2) / kGroupRows + 1 + kGroupsBelow)) {}

void StripImage::set(int column, int row, bool value) {
  const std::size_t upper = xIndex(column / kStripColumns, row / kGroupRows);
  const auto word = static_cast<std::size_t>(column % kStripColumns);
  const int bit = row % kGroupRows;
  setBit(blocks[upper].words[word], bit, value);
  setBit(blocks[upper - strips].words[word], kGroupRows + bit, value);
}

bool StripImage::get(int column, int row) const {
  const Block& block = getBlock(column / kStripColumns, row / kGroupRows);
  return (block.words[static_cast<std::size_t>(column % kStripColumns)] >> row % kGroupRows) & 1u;
}

}  // namespace QV::detail
