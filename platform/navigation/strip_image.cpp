#include "platform/navigation/strip_image.h"

#include <algorithm>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace QV::detail {
namespace {

// Rays go all over a big image: with small pages, each would wait for an address, too.
void useLargePages([[maybe_unused]] void* begin, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::size_t kLargePage = 2 << 20;
  if (bytes < kLargePage) return;
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t whole = (address + kPage - 1) / kPage * kPage;
  const std::uintptr_t skipped = whole - address;
  if (bytes > skipped) madvise(reinterpret_cast<void*>(whole), bytes - skipped, MADV_HUGEPAGE);
#endif
}

}  // namespace

StripImage::StripImage(int columns, int rows)
    : strips(static_cast<std::size_t>((columns + kStripColumns - 1) / kStripColumns)) {
  const auto groups = static_cast<std::size_t>((rows + 2) / kGroupRows + 1 + kGroupsBelow);
  blocks.reserve(strips * groups);
  useLargePages(blocks.data(), blocks.capacity() * sizeof(Block));
  blocks.resize(strips * groups);
  usedRows.resize(strips * groups);
}

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

void StripImage::fetch(int column, int row) const {
  const View view(*this);
  view.fetch(column / kStripColumns, row / kGroupRows);
  view.fetch(column / kStripColumns, row / kGroupRows - 1);
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
