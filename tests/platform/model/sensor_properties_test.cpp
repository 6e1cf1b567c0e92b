#include "platform/model/sensor_properties.h"

#include <limits>
#include <numbers>

#include "tests/support/vocabulary.h"

namespace QV::Model {
namespace {

TEST(SensorProperties, readsTheLongestNumericPrefixAndClampsAngles) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;
  constexpr int kMost = std::numeric_limits<int>::max();
  struct Case {
    const char* text;
    float number, finite;
    int integer;
    float angle;
  };
  const Case cases[] = {{" 2.9 m", 2.9f, 2.9f, 2, 2.9f},       {"-2.9", -2.9f, -2.9f, -2, 0.0f},
                        {"far", 0.0f, 0.0f, 0, 0.0f},          {"7", 7.0f, 7.0f, 7, kTurn},
                        {"inf", kInfinity, 0.0f, kMost, 0.0f}, {"3e9", 3e9f, 3e9f, kMost, kTurn}};
  for (const Case& c : cases) {
    SensorConfig config;
    config.properties["p"] = c.text;
    const SensorProperties sut(config);
    EXPECT_EQ(sut.getNumber("p"), c.number) << c.text;
    EXPECT_EQ(sut.getFinite("p"), c.finite) << c.text;
    EXPECT_EQ(sut.getInteger("p"), c.integer) << c.text;
    EXPECT_EQ(sut.getAngle("p"), c.angle) << c.text;
    EXPECT_EQ(sut.getNumber("q"), 0.0f);
  }
}

}  // namespace
}  // namespace QV::Model
