#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "session/internal/find_route.h"
#include "session/internal/session_robot.h"
#include "session/internal/timed_path.h"

namespace QV::session {

/**
 * The wheel of a robot, and who holds it: a hand, a goal, a timed path, itself or nobody; one takes
 * it from the other. The robot must outlive it.
 */
class Driver {
 public:
  /** The time for which a hand holds that does not move again, in the machine's time. */
  static constexpr ko::Duration kHeld{500'000'000};

  explicit Driver(SessionRobot& robot) : robot(robot) {}

  /** Drives by hand, m/s and rad/s; forgets the goal. */
  void drive(float forward, float turn);
  /** Forward, leftward and turning, for so much of ko::Clock's time; forgets the goal. */
  void drive(const Math::Pose2D& velocity, ko::Duration hold);
  /** Throws UsageError, and changes nothing, for a position that no path leads to. */
  void setGoal(const Math::Position2D& position);
  /** Takes the path that was found for askForRoute(): empty if there is none. */
  void setGoal(const Math::Position2D& position, const std::vector<Math::Position2D>& route);
  /** Returns the question for a path from here. Throws UsageError for a robot without a map. */
  RouteQuestion askForRoute(const Math::Position2D& position) const;
  const RouteFinder& getRouteFinder() const { return finder; }
  /** Finds paths in another way from now on. */
  void setRouteFinder(RouteFinder newFinder) { finder = std::move(newFinder); }
  /** The robot keeps to the path's times, from now on and at its end, until another order. */
  void follow(const TimedPath& path);
  /** Drives about. */
  void wander();
  void stop();

  /** Counts an order whose path is searched for now; returns its number. */
  std::uint64_t countOrder() { return ++orders; }
  /** Returns the number of the last order. */
  std::uint64_t getOrderCount() const { return orders; }

  const std::optional<Math::Position2D>& getGoal() const { return goal; }
  /** The corners that are left of the planned or timed path, the next one first. */
  std::vector<Math::Position2D> getRoute() const;

  /** Counts `machine` time off a hand's hold, simulated or not. */
  void release(ko::Duration machine);
  /** Steers for the next `simulated` time. */
  void steer(ko::Duration simulated);

 private:
  void xStop();
  void xGoOn(double seconds);
  void xGiveUp();

  SessionRobot& robot;
  RouteFinder finder = &findRouteTo;
  std::uint64_t orders = 0;
  ko::Duration held = ko::Duration::zero();
  std::optional<ko::Clock::time_point> heldUntil;
  std::optional<Math::Position2D> goal;
  std::optional<TimedPath> path;
  std::optional<TimedPath> timedPath;
  ko::Clock::time_point timedStart;
  /** The seconds of the path that are done, which say where the robot is to be; and for how long
   * it has not kept up. */
  double done = 0.0;
  double waited = 0.0;
};

}  // namespace QV::session
