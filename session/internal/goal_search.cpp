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
  question = SessionParts::of(session).driver.askForRoute(goal);
  route = std::async(std::launch::async, [this] { return findRoute(question, &isGivenUp); });
}

bool GoalSearch::finish() {
  if (!waitFor(std::chrono::milliseconds(0))) return false;
  SessionParts& parts = SessionParts::of(session);
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
