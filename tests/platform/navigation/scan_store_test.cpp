#include "platform/navigation/internal/scan_store.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/navigation/internal/map_inside.h"

namespace QV {
namespace {

using detail::ScanStore;
using detail::StripImage;

constexpr float kStoreLimit = 0.4f;

OccupancyMap randomMap(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> occupancy(0.0f, 1.0f);
  OccupancyMap map(width, height, 0.1f, {});
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) map.setOccupancy(column, row, occupancy(random));
  }
  return map;
}

/** True if a block holds the cells that it covers, and nothing where there are none. */
testing::AssertionResult holdsItsCells(const StripImage& image, int strip, int group,
                                       const OccupancyMap& map, float limit, bool turned) {
  const StripImage::Block& block = image.getBlock(strip, group);
  for (int i = 0; i < StripImage::kStripColumns; ++i) {
    for (int bit = 0; bit < 32; ++bit) {
      int column = strip * StripImage::kStripColumns + i;
      int row = group * StripImage::kGroupRows + bit;
      if (turned) std::swap(column, row);
      const bool expected = map.isInside(column, row) && map.getOccupancy(column, row) > limit;
      if ((block.words[static_cast<std::size_t>(i)] >> bit & 1u) == expected) continue;
      return testing::AssertionFailure() << "strip " << strip << ", group " << group << ", cell "
                                         << column << ", " << row << " expected " << expected;
    }
  }
  return testing::AssertionSuccess();
}

/** True if the rows of a strip, from one on, are told as used where they hold a cell. */
testing::AssertionResult tellsItsRows(const StripImage& image, int strip, int firstRow,
                                      const OccupancyMap& map, float limit, bool turned) {
  for (int i = 0; i < StripImage::kRowsSeen; ++i) {
    bool expected = false;
    for (int k = 0; k < StripImage::kStripColumns; ++k) {
      int column = strip * StripImage::kStripColumns + k;
      int row = firstRow + i;
      if (turned) std::swap(column, row);
      expected |= map.isInside(column, row) && map.getOccupancy(column, row) > limit;
    }
    if ((image.getUsedRows(strip, firstRow) >> i & 1u) == expected) continue;
    return testing::AssertionFailure() << "strip " << strip << ", row " << firstRow << " and " << i
                                       << " more expected " << expected;
  }
  return testing::AssertionSuccess();
}

void expectTrueImage(const StripImage& image, const OccupancyMap& map, float limit, bool turned) {
  const int columns = turned ? map.getHeight() : map.getWidth();
  const int rows = turned ? map.getWidth() : map.getHeight();
  for (int strip = 0; strip * StripImage::kStripColumns < columns; ++strip) {
    for (int group = -2; group <= (rows + 2) / StripImage::kGroupRows; ++group) {
      ASSERT_TRUE(holdsItsCells(image, strip, group, map, limit, turned)) << "turned " << turned;
    }
    for (int row = -32; row <= rows + 2; ++row) {
      ASSERT_TRUE(tellsItsRows(image, strip, row, map, limit, turned)) << "turned " << turned;
    }
  }
}

void expectTrueStore(const OccupancyMap& map, float limit) {
  const ScanStore* const store = detail::MapInside::findStore(map, limit);
  ASSERT_NE(store, nullptr);
  expectTrueImage(store->getUpright(), map, limit, false);
  expectTrueImage(store->getTurned(), map, limit, true);
}

TEST(ScanStore, holdsTheCellsOfMapsOfAnySize) {
  const int sizes[][2] = {{1, 1}, {1, 70}, {70, 1}, {15, 17}, {16, 16}, {33, 47}, {100, 64}};
  for (const auto& size : sizes) {
    SCOPED_TRACE(testing::Message() << size[0] << " by " << size[1]);
    expectTrueStore(randomMap(size[0], size[1], 1), kStoreLimit);
  }
}

TEST(ScanStore, staysCorrectWhenCellsChange) {
  OccupancyMap map = randomMap(67, 50, 2);
  ASSERT_NE(detail::MapInside::findStore(map, kStoreLimit), nullptr);
  ASSERT_NE(detail::MapInside::findStore(map, 0.7f), nullptr);
  std::mt19937 random(3);
  for (int round = 0; round < 20; ++round) {
    for (int change = 0; change < 50; ++change) {
      const int column = static_cast<int>(random() % 67);
      const int row = static_cast<int>(random() % 50);
      map.setOccupancy(column, row, static_cast<float>(random() % 11) / 10.0f);
    }
    expectTrueStore(map, kStoreLimit);
    expectTrueStore(map, 0.7f);
  }
}

TEST(ScanStore, knowsIfTheAreaAroundACellIsFree) {
  constexpr int kSide = 70;
  const auto stripOf = [](int column) { return std::max(column, 0) / StripImage::kStripColumns; };
  const int cells[][2] = {{0, 0}, {33, 35}, {69, 69}};
  for (const auto& [cellColumn, cellRow] : cells) {
    StripImage image(kSide, kSide);
    image.set(cellColumn, cellRow, true);
    for (int place = 0; place < kSide * kSide * (StripImage::kFarthestAround + 1); ++place) {
      const int column = place % kSide;
      const int row = place / kSide % kSide;
      const int distance = place / (kSide * kSide);
      const bool inItsStrips = stripOf(column - distance) <= stripOf(cellColumn) &&
                               stripOf(column + distance) >= stripOf(cellColumn);
      const bool isNear = inItsStrips && std::abs(cellRow - row) <= distance;
      ASSERT_EQ(image.isFreeAround(column, row, distance), !isNear)
          << column << ", " << row << ", " << distance << " from " << cellColumn << ", " << cellRow;
    }
  }
}

TEST(ScanStore, isBuiltOncePerOccupancyLimit) {
  const OccupancyMap map = randomMap(20, 20, 4);
  const ScanStore* const first = detail::MapInside::findStore(map, kStoreLimit);
  EXPECT_EQ(detail::MapInside::findStore(map, NAN), nullptr);
  const ScanStore* const second = detail::MapInside::findStore(map, 0.5f);
  EXPECT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(detail::MapInside::findStore(map, 0.6f), nullptr);
  EXPECT_EQ(detail::MapInside::findStore(map, kStoreLimit), first);
  EXPECT_EQ(detail::MapInside::findStore(map, 0.5f), second);
}

TEST(ScanStore, aCopyOfAMapHasItsOwn) {
  OccupancyMap map = randomMap(20, 20, 5);
  const ScanStore* const own = detail::MapInside::findStore(map, kStoreLimit);
  OccupancyMap copy = map;
  copy.setOccupancy(3, 4, 1.0f);
  map.setOccupancy(3, 4, 0.0f);
  expectTrueStore(copy, kStoreLimit);
  expectTrueStore(map, kStoreLimit);
  OccupancyMap moved = std::move(map);
  EXPECT_EQ(detail::MapInside::findStore(moved, kStoreLimit), own);
  copy = moved;
  expectTrueStore(copy, kStoreLimit);
}

TEST(ScanStore, isBuiltOnceForConcurrentReaders) {
  const OccupancyMap map = randomMap(300, 300, 6);
  std::vector<const ScanStore*> seen(4);
  std::vector<std::thread> readers;
  for (const ScanStore*& store : seen) {
    readers.emplace_back([&] { store = detail::MapInside::findStore(map, kStoreLimit); });
  }
  for (std::thread& reader : readers) reader.join();
  EXPECT_NE(seen[0], nullptr);
  EXPECT_EQ(seen, std::vector<const ScanStore*>(4, seen[0]));
}

}  // namespace
}  // namespace QV
