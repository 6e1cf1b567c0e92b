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
// A turn goes on for this long; between two walls the robot would oscillate otherwise.
constexpr int kShortestTurn = 8;

}  // namespace

Math::Pose2D Wanderer::step(const Math::Pose2D& pose, const Math::Pose2D& velocity) {
  // Obstacles missing in the map also stop the robot.
  const bool stopped = wanted.x > 0.0f && velocity.x < 0.5f * wanted.x;
  if (turnsLeft > 0) --turnsLeft;
  if (stopped || !xIsFree(pose)) {
    if (turnsLeft == 0 && turn == 0.0f) {
      const bool left = xIsFree(pose * Math::Pose2D(0.0f, 0.0f, 0.8f));
      turn = left ? kWanderingTurnSpeed : -kWanderingTurnSpeed;
      turnsLeft = kShortestTurn;
    }
  } else if (turnsLeft == 0) {
    turn = 0.0f;
  }
  wanted =
      turn == 0.0f ? Math::Pose2D(kWanderingSpeed, 0.0f, 0.0f) : Math::Pose2D(0.0f, 0.0f, turn);
  return wanted;
}

bool Wanderer::xIsFree(const Math::Pose2D& pose) const {
  for (float ahead = 0.0f; ahead <= kLength; ahead += kSpacing) {
    for (float side = -kHalfWidth; side <= kHalfWidth; side += kSpacing) {
      const auto occupancy = map.findOccupancy(pose * Math::Position2D(ahead, side));
      if (!occupancy || *occupancy > kStandsAbove) return false;
    }
  }
  return true;
}

}  // namespace QV::session
