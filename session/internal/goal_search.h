#pragma once

#include <atomic>
#include <future>
#include <vector>

#include "platform/api.h"
#include "session/internal/driver.h"

namespace QV::session {

class Session;

/**
 * A goal whose way is sought on another thread while the session goes on, as on a map of many
 * millions of cells that takes seconds. For the session's thread; the session must outlive it.
 */
class QV_API GoalSearch {
 public:
  /** Begins. UsageError for a robot without a map. */
  GoalSearch(Session& session, const Math::Position2D& goal);
  /** Gives the search up. */
  ~GoalSearch();
  GoalSearch(const GoalSearch&) = delete;
  GoalSearch& operator=(const GoalSearch&) = delete;

  /** Waits until the way is found or known not to be. */
  void wait() const { route.wait(); }
  /**
   * Sends the robot on the way, or answers false as long as it is sought. A robot that has moved
   * since is stopped, and its way sought anew. UsageError, and nothing changes, where no way leads.
   */
  bool finish();

 private:
  void xBegin();

  Session& session;
  const Math::Position2D goal;
  RouteQuestion question;
  std::atomic<bool> isGivenUp = false;
  std::future<std::vector<Math::Position2D>> route;
};

}  // namespace QV::session
