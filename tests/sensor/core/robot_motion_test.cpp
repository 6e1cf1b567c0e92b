#include "sensor/core/internal/robot_motion.h"

#include <cmath>

#include "sensor/core/internal/health_track.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

TEST(RobotMotion, addsUpTurnsAndWaysAndTellsTheDirection) {
  struct Note {
    int at;
    Math::Pose2D velocity;
    double turned;
    double went;
    Math::Position2D direction;
    bool isMoving;
  };
  const std::vector<Note> notes{{9000, {3.0f, 4.0f, 0.0f}, 0.0, 0.0, {0.6f, 0.8f}, true},
                                {9200, {-0.3f, 0.4f, -2.0f}, 0.4, 0.1, {-0.6f, 0.8f}, true},
                                {9800, {0.0f, 0.0f, 0.02f}, 0.41, 0.1, {}, true},
                                {9900, {0.009f, 0.0f, -0.009f}, 0.4109, 0.1009, {}, false},
                                {10'000, {0.011f, 0.0f, 0.0f}, 0.4109, 0.102, {1.0f, 0.0f}, true},
                                {10'100, {0.0f, NAN, 1.0f}, 0.4109, 0.102, {1.0f, 0.0f}, true},
                                {10'200, {0.0f, 1.0f, NAN}, 0.4109, 0.102, {1.0f, 0.0f}, true},
                                {10'100, {0.0f, -1.0f, 1.0f}, 0.4109, 0.102, {0.0f, -1.0f}, true},
                                {10'150, {0.0f, -1.0f, 1.0f}, 0.4609, 0.152, {0.0f, -1.0f}, true}};
  RobotMotion sut;
  for (const auto& [at, velocity, turned, went, direction, isMoving] : notes) {
    SCOPED_TRACE(at);
    sut.note(velocity, Time(milliseconds(at)));
    const RobotMotion::State state = sut.getState();
    EXPECT_NEAR(state.turned, turned, 1e-6);
    EXPECT_NEAR(state.went, went, 1e-6);
    EXPECT_NEAR(state.directionX, direction.x, 1e-6);
    EXPECT_NEAR(state.directionY, direction.y, 1e-6);
    EXPECT_EQ(state.isMoving, isMoving);
  }
}

/** Notes of a sensor that looks along (0.6, 0.8), and the robot's way since the last ones. */
struct TrackStep {
  const char* what;
  bool isNewPoints;
  bool isNewStamp;
  bool hasObstacle;
  bool hasObstacleAhead;
  Math::Position2D direction;
  double turned;
  double went;
};

TEST(HealthTrack, addsUpTheMotionThatTheSamePointsDoNotShow) {
  const std::vector<TrackStep> steps{
      {"first points", true, true, true, true, {0.6f, 0.8f}, 0.0, 0.0},
      {"ahead", false, true, true, true, {0.6f, 0.8f}, 0.1, 0.2},
      {"back", false, true, true, true, {-0.6f, -0.8f}, 0.2, 0.4},
      {"no new record", false, false, true, true, {0.6f, 0.8f}, 0.2, 0.4},
      {"two ways by now, aside", false, true, true, true, {0.8f, 0.6f}, 0.4, 0.8},
      {"far aside", false, true, true, true, {0.3f, 0.954f}, 0.5, 0.8},
      {"nothing ahead", false, true, true, false, {0.6f, 0.8f}, 0.6, 0.8},
      {"no obstacle", false, true, false, true, {0.6f, 0.8f}, 0.0, 0.0},
      {"one again", false, true, true, true, {0.6f, 0.8f}, 0.1, 0.2},
      {"other points", true, false, true, true, {0.6f, 0.8f}, 0.0, 0.0}};
  HealthTrack sut;
  ReadingNotes notes;
  notes.startedAt = 5;
  notes.axisX = 0.6f;
  notes.axisY = 0.8f;
  RobotMotion::State moved{10.0, 20.0, 0.0f, 0.0f, true};
  for (const TrackStep& step : steps) {
    SCOPED_TRACE(step.what);
    notes.stamps += step.isNewStamp ? 1 : 0;
    notes.changes += step.isNewPoints ? 1 : 0;
    notes.digest.hasObstacle = step.hasObstacle;
    notes.digest.hasObstacleAhead = step.hasObstacleAhead;
    moved.turned += 0.1;
    moved.went += 0.2;
    moved.directionX = step.direction.x;
    moved.directionY = step.direction.y;
    sut.update(notes, true, moved);
    EXPECT_NEAR(sut.turned, step.turned, 1e-6);
    EXPECT_NEAR(sut.went, step.went, 1e-6);
  }
  notes.stamps += 1;
  moved.turned += 0.1;
  sut.update(notes, true, moved);
  EXPECT_NEAR(sut.turned, 0.1, 1e-6);
  notes.startedAt = 6;
  sut.update(notes, true, moved);
  EXPECT_EQ(sut.turned, 0.0);
}

}  // namespace
}  // namespace QV::sensor
