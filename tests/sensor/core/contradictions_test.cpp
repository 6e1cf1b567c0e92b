#include "sensor/core/internal/contradictions.h"

#include <gmock/gmock.h>

namespace QV::sensor {
namespace {

const std::string kLeft = "Left";
const std::string kMiddle = "Middle";
const std::string kRight = "Right";

Contradictions::Sight sight(const std::string& sensor, float range) {
  Math::MetricalData record;
  record.fieldOfView = {0.1f, 9.0f, 0.8f, 2};
  PlanarView view;
  view.begin(record, false, {});
  view.add(range, 0.0f);
  return {&sensor, view};
}

constexpr double kNothing = -1.0;

/** What both see some seconds later, after half a second in motion, and the seconds told then. */
struct Step {
  float left;
  float right;
  double told;
  double later = 1.0;
};

struct ContradictionCase {
  const char* what;
  std::vector<Step> steps;
};

const std::vector<ContradictionCase> kContradictionCases{
    {"counts the motion while the ranges change and their ratio does not",
     {{1.0f, 2.0f, kNothing}, {1.25f, 2.5f, kNothing}, {1.4f, 2.8f, 1.0}, {1.0f, 2.0f, 1.5}}},
    {"so does the nearer one", {{1.0f, 2.0f, kNothing}, {0.7f, 1.4f, 0.5}}},
    {"ranges that stay say nothing", {{1.0f, 2.0f, kNothing}, {1.0f, 2.0f, kNothing}}},
    {"a difference of centimetres is none", {{0.2f, 0.34f, kNothing}, {0.4f, 0.54f, kNothing}}},
    {"of more, it is one", {{0.2f, 0.36f, kNothing}, {0.36f, 0.648f, 0.5}}},
    {"nor is a third", {{2.0f, 2.9f, kNothing}, {3.0f, 4.35f, kNothing}}},
    {"half is", {{2.0f, 3.05f, kNothing}, {3.0f, 4.575f, 0.5}}},
    {"a ratio that wanders by a sixth is the same",
     {{1.0f, 2.0f, kNothing}, {1.64f, 2.8f, 0.5}, {1.4f, 2.8f, 1.0}, {0.95f, 2.0f, 1.0}}},
    {"two other ratios are left out",
     {{1.0f, 2.0f, kNothing},
      {1.4f, 2.8f, 0.5},
      {1.0f, 4.0f, 0.5},
      {1.0f, 4.0f, 0.5},
      {1.4f, 2.8f, 1.0},
      {1.0f, 4.0f, 1.0},
      {1.0f, 4.0f, 1.0},
      {1.4f, 2.8f, 1.5}}},
    {"after three it begins anew",
     {{1.0f, 2.0f, kNothing},
      {1.4f, 2.8f, 0.5},
      {1.0f, 3.0f, 0.5},
      {1.0f, 3.0f, 0.5},
      {1.0f, 3.0f, kNothing},
      {1.5f, 4.5f, 0.5}}},
    {"two agreements end nothing",
     {{1.0f, 2.0f, kNothing},
      {1.4f, 2.8f, 0.5},
      {2.0f, 2.0f, 0.5},
      {2.0f, 2.0f, 0.5},
      {1.0f, 2.0f, 1.0},
      {2.0f, 2.0f, 1.0},
      {2.0f, 2.0f, 1.0},
      {2.0f, 2.0f, kNothing}}},
    {"nine seconds without a comparison are none",
     {{1.0f, 2.0f, kNothing}, {1.4f, 2.8f, 0.5}, {1.0f, 2.0f, 1.0, 9.9}}},
    {"ten end it", {{1.0f, 2.0f, kNothing}, {1.4f, 2.8f, 0.5}, {1.0f, 2.0f, kNothing, 10.1}}},
    {"so does a clock that goes back",
     {{1.0f, 2.0f, kNothing}, {1.4f, 2.8f, 0.5}, {1.0f, 2.0f, kNothing, -1.0}}},
};

TEST(Contradictions, countOnlyWithOneRatioOverChangingRanges) {
  for (const auto& [what, steps] : kContradictionCases) {
    Contradictions sut;
    double now = 100.0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      SCOPED_TRACE(std::string(what) + ", step " + std::to_string(i));
      now += steps[i].later;
      sut.compare(sight(kLeft, steps[i].left), sight(kRight, steps[i].right), now, 0.5);
      const auto told = sut.find(kLeft);
      EXPECT_NEAR(told ? told->seconds : kNothing, steps[i].told, 1e-9);
    }
  }
}

TEST(Contradictions, theLongestIsToldToEachOfItsTwo) {
  Contradictions sut;
  for (const float range : {1.0f, 1.5f, 2.0f}) {
    sut.compare(sight(kLeft, range), sight(kMiddle, 2.0f * range), 10.0 + range, 0.25);
    sut.compare(sight(kLeft, range), sight(kRight, 3.0f * range), 10.0 + range, 0.5);
  }
  const auto ofLeft = sut.find(kLeft);
  ASSERT_TRUE(ofLeft);
  EXPECT_EQ(*ofLeft->other, kRight);
  EXPECT_FLOAT_EQ(static_cast<float>(ofLeft->own), 2.0f);
  EXPECT_FLOAT_EQ(static_cast<float>(ofLeft->others), 6.0f);
  const auto ofMiddle = sut.find(kMiddle);
  ASSERT_TRUE(ofMiddle);
  EXPECT_EQ(*ofMiddle->other, kLeft);
  EXPECT_EQ(ofMiddle->seconds, 0.5);
  EXPECT_FLOAT_EQ(static_cast<float>(ofMiddle->own), 4.0f);
  EXPECT_FLOAT_EQ(static_cast<float>(ofMiddle->others), 2.0f);
  sut.forget(21.9);
  EXPECT_FALSE(sut.isEmpty());
  sut.forget(22.1);
  EXPECT_TRUE(sut.isEmpty());
}

}  // namespace
}  // namespace QV::sensor
