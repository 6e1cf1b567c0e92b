#include "platform/navigation/internal/strip_image.h"

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

template <typename Word>
void setBit(Word& word, int bit, bool value) {
  const Word mask = Word{1} << bit;
  word = value ? word | mask : word & ~mask;
}

bool isUsed(const StripImage::Block& block, int row) {
  std::uint32_t any = 0;
  for (const std::uint32_t word : block.words) any |= word;
  return (any >> row & 1) != 0;
}

}  // namespace

StripImage::StripImage(int columns, int rows)
    : strips(static_cast<std::size_t>((columns + kStripColumns - 1) / kStripColumns)) {
  const auto groups = static_cast<std::size_t>((rows + 2) / kGroupRows) + 1 + kGroupsBelow;
  blocks.reserve(strips * groups);
  useLargePages(blocks.data(), blocks.capacity() * sizeof(Block));
  blocks.resize(strips * groups);
  usedRows.resize(strips * static_cast<std::size_t>((rows + 2) / kUsedStep + 1 + kUsedBelow));
}

void StripImage::set(int column, int row, bool value) {
  const std::size_t upper = xIndex(column / kStripColumns, row / kGroupRows);
  const auto word = static_cast<std::size_t>(column % kStripColumns);
  const int bit = row % kGroupRows;
  setBit(blocks[upper].words[word], bit, value);
  setBit(blocks[upper - strips].words[word], kGroupRows + bit, value);
  xSetUsed(column / kStripColumns, row, value || isUsed(blocks[upper], bit));
}

bool StripImage::isFreeAround(int column, int row, int distance) const {
  const View view(*this);
  const int last = std::min(column + distance, static_cast<int>(strips) * kStripColumns - 1);
  std::uint64_t used = 0;
  for (int strip = std::max(column - distance, 0) / kStripColumns; strip <= last / kStripColumns;
       ++strip) {
    used |= view.getUsedRows(strip, row - distance);
  }
  return (used & ((std::uint64_t{2} << 2 * distance) - 1)) == 0;
}

void StripImage::fetch(int column, int row) const {
  const View view(*this);
  const int strip = column / kStripColumns;
  view.fetchBlock(strip, row / kGroupRows);
  view.fetchBlock(strip, row / kGroupRows - 1);
  view.fetchUsedRows(strip, row);
  view.fetchUsedRows(strip, row - kGroupRows);
}

std::size_t StripImage::getBytes() const {
  return blocks.size() * sizeof(Block) + usedRows.size() * sizeof(usedRows[0]);
}

void StripImage::xSetUsed(int strip, int row, bool value) {
  const std::size_t upper = static_cast<std::size_t>(row / kUsedStep + kUsedBelow) * strips +
                            static_cast<std::size_t>(strip);
  setBit(usedRows[upper], row % kUsedStep, value);
  setBit(usedRows[upper - strips], kUsedStep + row % kUsedStep, value);
}

}  // namespace QV::detail
