#include "robot/world/scene/internal/crowd.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include "robot/world/chance/internal/generator.h"

namespace QV::robot {
namespace {

// Metres.
constexpr float kComfort = 0.3f;
constexpr float kClearance = 0.3f;
constexpr float kStartFromRobot = 1.5f;
constexpr float kStride = 0.2f;
constexpr float kShortestWalk = 1.0f;
constexpr float kLongestWalk = 5.0f;
// Seconds.
constexpr float kRest = 1.0f;
constexpr int kTries = 10;
constexpr int kStartTries = 10000;

Math::Position2D towards(const Math::Position2D& from, const Math::Position2D& to, float way) {
  const float distance = distanceBetween(from, to);
  if (distance <= way) return to;
  return {from.x + (to.x - from.x) * way / distance, from.y + (to.y - from.y) * way / distance};
}

bool isFinite(const Math::Position2D& position) {
  return std::isfinite(position.x) && std::isfinite(position.y);
}

void check(const Walker& walker) {
  const bool makesSense = !walker.path.empty() && std::isfinite(walker.speed) &&
                          walker.speed >= 0.0f &&
                          std::all_of(walker.path.begin(), walker.path.end(), isFinite);
  if (makesSense) return;
  throw std::invalid_argument("WorldOptions: a walker with a finite path and speed expected");
}

}  // namespace

Crowd::Crowd(const Scene& scene, const WorldOptions& options, float robotRadius)
    : scene(scene),
      distanceToRobot(robotRadius + kPersonRadius + kComfort),
      generator(makeGenerator(options.seed, "people")) {
  for (const Walker& walker : options.people) xAdd(walker, false);
  const Math::Position2D robot = Math::position2DFromPose2D(options.start);
  for (int i = 0; i < options.randomPeople; ++i) xAdd({{xChooseStart(robot)}}, true);
}

void Crowd::xAdd(const Walker& walker, bool isRandom) {
  check(walker);
  people.push_back({walker.path, walker.speed, isRandom});
  positions.push_back(walker.path.front());
}

void Crowd::walk(ko::Duration duration, const Math::Position2D& robot) {
  const float seconds = boost::chrono::duration<float>(duration).count();
  for (std::size_t i = 0; i < people.size(); ++i) {
    xWalk(people[i], positions[i], seconds, robot);
  }
}

void Crowd::xWalk(Person& person, Math::Position2D& position, float seconds,
                  const Math::Position2D& robot) {
  person.rest -= seconds;
  if (person.rest > 0.0f) return;
  const Math::Position2D target = person.path[person.target];
  const Math::Position2D next = towards(position, target, person.speed * seconds);
  const float distance = distanceBetween(next, robot);
  if (distance < distanceToRobot && distance < distanceBetween(position, robot)) {
    if (person.isRandom) xChooseTarget(person, position);
    return;
  }
  position = next;
  if (position == target) xArrive(person, position);
}

void Crowd::xArrive(Person& person, const Math::Position2D& position) {
  if (person.isRandom) return xChooseTarget(person, position);
  if (person.path.size() == 1) return;
  if (person.target == 0) person.returns = false;
  if (person.target + 1 == person.path.size()) person.returns = true;
  person.returns ? --person.target : ++person.target;
}

void Crowd::xChooseTarget(Person& person, const Math::Position2D& from) {
  std::uniform_real_distribution<float> headings(0.0f, 2.0f * std::numbers::pi_v<float>);
  std::uniform_real_distribution<float> ways(kShortestWalk, kLongestWalk);
  for (int i = 0; i < kTries; ++i) {
    const Math::Pose2D looking(from.x, from.y, headings(generator));
    const Math::Position2D to = looking * Math::Position2D(ways(generator), 0.0f);
    if (!xCanWalk(from, to)) continue;
    person.path = {to};
    return;
  }
  person.rest = kRest;
}

Math::Position2D Crowd::xChooseStart(const Math::Position2D& robot) {
  const OccupancyMap& map = scene.getMap();
  std::uniform_int_distribution<int> columns(0, map.getWidth() - 1);
  std::uniform_int_distribution<int> rows(0, map.getHeight() - 1);
  for (int i = 0; i < kStartTries; ++i) {
    const int column = columns(generator);
    const Math::Position2D position = map.getCellCentre(column, rows(generator));
    if (distanceBetween(position, robot) > kStartFromRobot && xHasRoom(position)) return position;
  }
  throw std::invalid_argument("the map has no room for random people");
}

bool Crowd::xHasRoom(const Math::Position2D& position) const {
  return std::isinf(scene.findNearest(position, kClearance, kPersonHeight, {}).distance);
}

bool Crowd::xCanWalk(const Math::Position2D& from, const Math::Position2D& to) const {
  Math::Position2D at = from;
  // Far from the map's zero a position is so coarse that no stride moves it.
  const int most = 2 + static_cast<int>(kLongestWalk / kStride);
  for (int strides = 0; !(at == to); ++strides) {
    at = towards(at, to, kStride);
    if (strides == most || !xHasRoom(at)) return false;
  }
  return true;
}

}  // namespace QV::robot
