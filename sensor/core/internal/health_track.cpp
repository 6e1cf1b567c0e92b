#include "sensor/core/internal/health_track.h"

#include <cmath>

namespace QV::sensor {
namespace {

// The cosine of the angle to the sensor's axis at which the robot still goes ahead.
constexpr float kAlongAxis = 0.95f;

}  // namespace

void HealthTrack::update(const ReadingNotes& notes, bool showsMotion,
                         const RobotMotion::State& moved) {
  const bool isOther = notes.startedAt != startedAt || notes.changes != changes;
  if (!isOther && notes.stamps == stamps) return;
  const ReadingDigest& digest = notes.digest;
  if (isOther || !showsMotion || !digest.hasObstacle) {
    turned = went = 0.0;
  } else {
    turned += moved.turned - turnedBefore;
    const float along = notes.axisX * moved.directionX + notes.axisY * moved.directionY;
    if (digest.hasObstacleAhead && std::abs(along) > kAlongAxis) went += moved.went - wentBefore;
  }
  startedAt = notes.startedAt;
  stamps = notes.stamps;
  changes = notes.changes;
  turnedBefore = moved.turned;
  wentBefore = moved.went;
}

}  // namespace QV::sensor
