#include "session/internal/goal_search.h"

#include <cmath>

#include "session/internal/session_parts.h"
#include "session/session.h"

namespace QV::session {
namespace {

// Metres.
constexpr float kStill = 0.001f;

}  // namespace

GoalSearch::GoalSearch(Session& session, const Math::Position2D& goal)
    : session(session), goal(goal) {
  xBegin();
}

GoalSearch::~GoalSearch() {
  isGivenUp = true;
}

void GoalSearch::xBegin() {
  Driver& driver = SessionParts::of(session).driver;
  question = driver.askForRoute(goal);
  order = driver.countOrder();
  route = std::async(std::launch::async,
                     [this, find = driver.getRouteFinder()] { return find(question, isGivenUp); });
}

bool GoalSearch::isReplaced() const {
  return SessionParts::of(session).driver.getOrderCount() != order;
}

bool GoalSearch::finish() {
  SessionParts& parts = SessionParts::of(session);
  if (isReplaced()) return true;
  if (!waitFor(std::chrono::milliseconds(0))) return false;
  const auto found = route.get();
  const Math::Position2D at = parts.driver.askForRoute(goal).from;
  const float moved = std::hypot(at.x - question.from.x, at.y - question.from.y);
  if (!found.empty() && moved > kStill) {
    parts.driver.stop();
    xBegin();
    return false;
  }
  parts.tell({"goal", {}, {}, true, {goal.x, goal.y}});
  parts.driver.setGoal(goal, found);
  return true;
}

}  // namespace QV::session
