#pragma once

#include <cstddef>
#include <random>
#include <vector>

#include "platform/ko/clock.h"
#include "robot/world/scene/internal/scene.h"

namespace QV::robot {

/**
 * The people of a world. Some walk along their path and back, some to places that they choose; all
 * keep their distance from a round robot. For one thread at a time.
 */
class Crowd {
 public:
  /** No room for the random ones, or a path of none: std::invalid_argument. */
  Crowd(const Scene& scene, const WorldOptions& options, float robotRadius);

  void walk(ko::Duration duration, const Math::Position2D& robot);

  /** Returns the people of the options first, then the random ones. */
  const People& getPositions() const { return positions; }

 private:
  struct Person {
    std::vector<Math::Position2D> path;
    float speed;
    bool isRandom;
    /** The point of the path that this person goes to. */
    std::size_t target = 0;
    bool returns = false;
    float rest = 0.0f;
  };

  void xAdd(const Walker& walker, bool isRandom);
  void xWalk(Person& person, Math::Position2D& position, float seconds,
             const Math::Position2D& robot);
  void xArrive(Person& person, const Math::Position2D& position);
  void xChooseTarget(Person& person, const Math::Position2D& from);
  Math::Position2D xChooseStart(const Math::Position2D& robot);
  bool xHasRoom(const Math::Position2D& position) const;
  bool xCanWalk(const Math::Position2D& from, const Math::Position2D& to) const;

  const Scene& scene;
  const float distanceToRobot;
  std::mt19937 generator;
  std::vector<Person> people;
  People positions;
};

}  // namespace QV::robot
