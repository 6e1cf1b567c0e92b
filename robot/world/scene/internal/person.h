#pragma once

#include <optional>
#include <vector>

#include "robot/world/scene/surroundings.h"

namespace QV::robot {

/** The places of people in the map: upright cylinders. */
using People = std::vector<Math::Position2D>;

/** Metres. */
constexpr float kPersonRadius = 0.2f;
constexpr float kPersonHeight = 1.7f;

/** The part of the ray in a person without head and feet; nothing if it misses. */
std::optional<Stretch> clipPerson(const Ray& ray, const Math::Position2D& person);

}  // namespace QV::robot
