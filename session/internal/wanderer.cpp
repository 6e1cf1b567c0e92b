#include "session/internal/wanderer.h"

namespace QV::session {
namespace {

constexpr float kWanderingSpeed = 0.3f;
constexpr float kWanderingTurnSpeed = 0.7f;
// Metres: of the way that must be free.
constexpr float kLength = 0.8f;
constexpr float kHalfWidth = 0.36f;
constexpr float kSpacing = 0.06f;
constexpr float kStandsAbove = OccupancyMap::kSolidAbove;
// In steps. A turn goes on for this long; between two walls the robot would oscillate otherwise.
constexpr int kShortestTurn = 8;
constexpr int kWholeTurn = 90;
// After a drive of so many steps at most, the robot turns to the same side as before.
constexpr int kShortDrive = 10;
// By that factor the room wanted shrinks with each whole turn, as in a niche.
constexpr float kTighter = 0.75f;

}  // namespace

Math::Pose2D Wanderer::step(const Math::Pose2D& pose, const Math::Pose2D& velocity) {
  // Obstacles missing in the map also stop the robot.
  const bool stopped = wanted.x > 0.0f && velocity.x < 0.5f * wanted.x;
  if (turnsLeft > 0) --turnsLeft;
  if (++steps % kWholeTurn == 0 && turn != 0.0f) room *= kTighter;
  if (stopped || !xHasWay(pose)) {
    if (turnsLeft == 0 && turn == 0.0f) xTurn(pose);
  } else if (turnsLeft == 0 && turn != 0.0f) {
    turn = 0.0f;
    steps = 0;
  }
  wanted =
      turn == 0.0f ? Math::Pose2D(kWanderingSpeed, 0.0f, 0.0f) : Math::Pose2D(0.0f, 0.0f, turn);
  return wanted;
}

// Before somebody who stands, a new choice for each turn would lead left and right for ever.
void Wanderer::xTurn(const Math::Pose2D& pose) {
  if (steps > kShortDrive || side == 0.0f) {
    const bool left = xIsFree(pose * Math::Pose2D(0.0f, 0.0f, 0.8f), 1.0f);
    side = left ? kWanderingTurnSpeed : -kWanderingTurnSpeed;
  }
  turn = side;
  turnsLeft = kShortestTurn;
  steps = 0;
}

bool Wanderer::xHasWay(const Math::Pose2D& pose) {
  if (xIsFree(pose, 1.0f)) {
    room = 1.0f;
    return true;
  }
  return room < 1.0f && xIsFree(pose, room);
}

bool Wanderer::xIsFree(const Math::Pose2D& pose, float share) const {
  for (float ahead = 0.0f; ahead <= share * kLength; ahead += kSpacing) {
    for (float side = -share * kHalfWidth; side <= share * kHalfWidth; side += kSpacing) {
      const auto occupancy = map.findOccupancy(pose * Math::Position2D(ahead, side));
      if (!occupancy || *occupancy > kStandsAbove) return false;
    }
  }
  return true;
}

}  // namespace QV::session
