#include "robot/logs/internal/sonar_source.h"

#include "platform/ko/simulated_time.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

/** Makes a sonar whose key has its name. */
Model::SensorConfig sonarNamed(const std::string& name) {
  return {name, "", 9, {}, {{"maximumDetectionDistance", "5"}}, {name}};
}

Recording twoSonars() {
  Recording recording;
  recording.sensors = {sonarNamed("Left"), sonarNamed("Right")};
  recording.steps = {{milliseconds(0), {}, {1.0f, 5.0f}}, {milliseconds(250), {}, {1.5f, 2.5f}}};
  return recording;
}

TEST(SonarSource, playsTheNewestRanges) {
  ko::SimulatedTime time;
  const auto sut = makeSonarSource(twoSonars(), ko::Clock::now() + milliseconds(100));
  EXPECT_FALSE(sut("Left"));
  time.advance(milliseconds(100));
  EXPECT_EQ(sut("Left"), 1.0f);
  EXPECT_FALSE(sut("Right")) << "a range at the maximum is no echo";
  time.advance(milliseconds(249));
  EXPECT_EQ(sut("Left"), 1.0f);
  time.advance(milliseconds(1));
  EXPECT_EQ(sut("Left"), 1.5f);
  EXPECT_EQ(sut("Right"), 2.5f);
  time.advance(milliseconds(9999));
  EXPECT_EQ(sut("Right"), 2.5f);
  EXPECT_THROW(sut("Middle"), std::invalid_argument);
}

}  // namespace
}  // namespace QV::robot
