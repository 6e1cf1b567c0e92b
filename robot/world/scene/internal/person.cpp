#include "robot/world/scene/internal/person.h"

#include <algorithm>
#include <cmath>

namespace QV::robot {

std::optional<Stretch> clipPerson(const Ray& ray, const Math::Position2D& person) {
  const float x = person.x - ray.origin.x;
  const float y = person.y - ray.origin.y;
  const float speed = std::hypot(ray.direction.x, ray.direction.y);
  const float along = (x * ray.direction.x + y * ray.direction.y) / speed;
  const float aside = (x * ray.direction.y - y * ray.direction.x) / speed;
  // Written so that a ray straight up or down, which has no side, misses.
  if (!(std::abs(aside) <= kPersonRadius)) return std::nullopt;
  const float half = std::sqrt(kPersonRadius * kPersonRadius - aside * aside);
  if (along + half < 0.0f) return std::nullopt;
  return Stretch{std::max(0.0f, along - half) / speed, (along + half) / speed};
}

}  // namespace QV::robot
