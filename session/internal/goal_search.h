#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <vector>

#include "platform/api.h"
#include "session/internal/driver.h"

namespace QV::session {

class Session;

/**
 * Searches the path to a goal on another thread while the session goes on: on a map of many
 * millions of cells that takes seconds. Whatever else drives or stops the robot meanwhile replaces
 * it, a newer search too. Use it on the session's thread. The session must outlive it.
 */
class QV_API GoalSearch {
 public:
  /** Starts the search. Throws UsageError for a robot without a map. `goal` is in the map, m. */
  GoalSearch(Session& session, const Math::Position2D& goal);
  /** Ends the search, and waits for its thread. */
  ~GoalSearch();
  GoalSearch(const GoalSearch&) = delete;
  GoalSearch& operator=(const GoalSearch&) = delete;

  /** Waits up to `limit` for the end of the search; false while it goes on. */
  bool waitFor(std::chrono::milliseconds limit) const {
    return route.wait_for(limit) == std::future_status::ready;
  }
  /** True if something else has driven or stopped the robot since. */
  bool isReplaced() const;
  /**
   * Sends the robot on the path; false while the search goes on. Does nothing and returns true if
   * it was replaced. If the robot has moved since, it stops and the search starts again. Throws
   * UsageError, and changes nothing, if there is no path; the search is then over, too.
   */
  bool finish();
  const Math::Position2D& getGoal() const { return goal; }

 private:
  void xBegin();

  Session& session;
  const Math::Position2D goal;
  RouteQuestion question;
  std::uint64_t order = 0;
  std::atomic<bool> isGivenUp = false;
  std::future<std::vector<Math::Position2D>> route;
};

}  // namespace QV::session
