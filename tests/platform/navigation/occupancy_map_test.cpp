#include "platform/navigation/occupancy_map.h"

#include <cmath>
#include <numbers>
#include <stdexcept>

#include "tests/support/vocabulary.h"

namespace QV {
namespace {

constexpr float kHalfTurn = std::numbers::pi_v<float>;

TEST(OccupancyMap, refusesInvalidSizesAndOccupancies) {
  const auto refused = [](const char* text, auto make) {
    EXPECT_THAT(make, ThrowsMessage<std::invalid_argument>(HasSubstr(text)));
  };
  refused("0 by 3 given", [] { OccupancyMap(0, 3, 0.1f, {}); });
  refused("3 by -1 given", [] { OccupancyMap(3, -1, 0.1f, {}); });
  refused("1048577 by 1 given", [] { OccupancyMap(1048577, 1, 0.1f, {}); });
  refused("a resolution above 0", [] { OccupancyMap(3, 3, 0.0f, {}); });
  refused("a resolution above 0", [] { OccupancyMap(3, 3, INFINITY, {}); });
  refused("the origin is not finite", [] { OccupancyMap(3, 3, 0.1f, {0, 0, NAN}); });
  refused("1.500000 given", [] { OccupancyMap(3, 3, 0.1f, {}, 1.5f); });
  refused("5 cells given for 3 by 2", [] { OccupancyMap(3, 2, 0.1f, {}, std::vector<float>(5)); });
  refused("nan given", [] { OccupancyMap(1, 2, 0.1f, {}, {0.0f, NAN}); });
}

TEST(OccupancyMap, keepsCellsByColumnAndRow) {
  OccupancyMap sut(3, 2, 0.1f, {}, {0.0f, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f});
  EXPECT_EQ(sut.getOccupancy(1, 0), 0.1f);
  EXPECT_EQ(sut.getOccupancy(0, 1), 0.3f);
  sut.setOccupancy(2, 1, 1.0f);
  EXPECT_EQ(sut.getCells().back(), 1.0f);
  EXPECT_THAT([&] { sut.getOccupancy(3, 0); },
              ThrowsMessage<std::out_of_range>(HasSubstr("no cell 3, 0 in 3 by 2")));
  EXPECT_THROW(sut.setOccupancy(0, -1, 0.0f), std::out_of_range);
  EXPECT_THROW(sut.setOccupancy(0, 0, NAN), std::invalid_argument);
}

TEST(OccupancyMap, findsTheCellOfAPositionUnderAnOriginWithYaw) {
  OccupancyMap sut(4, 2, 0.5f, {1.0f, 2.0f, kHalfTurn / 2}, 0.0f);
  sut.setOccupancy(3, 1, 1.0f);
  // Columns run along the world's y, rows against its x.
  EXPECT_EQ(sut.findOccupancy({0.25f, 3.75f}), 1.0f);
  EXPECT_EQ(sut.findOccupancy({0.75f, 3.75f}), 0.0f);
  EXPECT_EQ(sut.findOccupancy({1.25f, 3.75f}), std::nullopt);
  EXPECT_EQ(sut.findOccupancy({0.25f, 4.25f}), std::nullopt);
  EXPECT_EQ(sut.findOccupancy({NAN, 3.0f}), std::nullopt);
  EXPECT_NEAR(sut.getCellCentre(3, 1).x, 0.25f, 1e-6f);
  EXPECT_NEAR(sut.getCellCentre(3, 1).y, 3.75f, 1e-6f);
}

}  // namespace
}  // namespace QV
